// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/lint/process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <optional>
#include <system_error>

#include "common/command_line.h"

namespace rulecheck {
namespace {

// The two ends of a pipe.
class Pipe {
 public:
  Pipe() {
    if (pipe2(ends_.data(), O_CLOEXEC) != 0) {
      throw std::system_error(errno, std::generic_category(), "pipe");
    }
  }
  ~Pipe() {
    close(ends_[0]);
    closeWriting();
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;

  int writing() const { return ends_[1]; }

  void closeWriting() {
    if (ends_[1] >= 0) {
      close(ends_[1]);
      ends_[1] = -1;
    }
  }

  // What is written until all ends for writing are closed; nothing if a signal of the
  // descriptor comes first.
  std::optional<std::string> readAll(int signals) const {
    std::string content;
    std::array<char, 65536> buffer;
    std::array<pollfd, 2> sources = {{{ends_[0], POLLIN, 0}, {signals, POLLIN, 0}}};
    for (;;) {
      if (poll(sources.data(), sources.size(), -1) < 0) {
        continue;  // as after SIGCONT
      }
      if (sources[1].revents != 0) {
        return std::nullopt;
      }
      const ssize_t count = read(ends_[0], buffer.data(), buffer.size());
      if (count > 0) {
        content.append(buffer.data(), static_cast<std::size_t>(count));
      } else if (count == 0 || errno != EINTR) {
        return content;
      }
    }
  }

 private:
  std::array<int, 2> ends_;
};

// What a new process does before its program starts.
class Preparation {
 public:
  Preparation(const Pipe& output, int descriptor) {
    posix_spawn_file_actions_init(&actions_);
    for (const int each : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
      posix_spawn_file_actions_addopen(&actions_, each, "/dev/null", O_RDWR, 0);
    }
    posix_spawn_file_actions_adddup2(&actions_, output.writing(), descriptor);
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_init(&attributes_);
    posix_spawnattr_setsigmask(&attributes_, &none);
    // A process group of its own, to be killed with all that it starts.
    posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETPGROUP);
  }
  ~Preparation() {
    posix_spawnattr_destroy(&attributes_);
    posix_spawn_file_actions_destroy(&actions_);
  }
  Preparation(const Preparation&) = delete;
  Preparation& operator=(const Preparation&) = delete;

  const posix_spawn_file_actions_t* actions() const { return &actions_; }
  const posix_spawnattr_t* attributes() const { return &attributes_; }

 private:
  posix_spawn_file_actions_t actions_;
  posix_spawnattr_t attributes_;
};

pid_t start(const std::vector<std::string>& words, const Preparation& preparation) {
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (const std::string& word : words) {
    arguments.push_back(const_cast<char*>(word.c_str()));
  }
  arguments.push_back(nullptr);
  pid_t pid = 0;
  const int error = posix_spawnp(&pid, arguments[0], preparation.actions(),
                                 preparation.attributes(), arguments.data(), environ);
  if (error != 0) {
    throw apps::CannotRun(words[0] + ": cannot be run: " + std::generic_category().message(error));
  }
  return pid;
}

int waitFor(pid_t pid) {
  int status = 0;
  while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  return status;
}

}  // namespace

Ended run(const std::vector<std::string>& words, int descriptor, const apps::HeldSignals& signals) {
  Pipe output;
  const pid_t pid = start(words, Preparation(output, descriptor));
  const int arriving = signalfd(-1, &signals.held(), SFD_CLOEXEC);
  output.closeWriting();
  const std::optional<std::string> text = output.readAll(arriving);
  close(arriving);
  if (!text) {
    kill(-pid, SIGKILL);
  }
  const int status = waitFor(pid);
  if (!text) {
    throw std::runtime_error(words[0] + ": stopped by a signal");
  }
  return {WIFEXITED(status) && WEXITSTATUS(status) == 0, *text};
}

}  // namespace rulecheck
