// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/lint/process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/signalfd.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <stdexcept>
#include <system_error>

#include "common/command_line.h"

namespace rulecheck {
namespace {

// What a pipe holds at most.
constexpr int kPipeBytes = 1 << 20;

[[noreturn]] void fail(const char* call) {
  throw std::system_error(errno, std::generic_category(), call);
}

class Descriptor {
 public:
  Descriptor(int number, const char* call) : number_(number) {
    if (number < 0) {
      fail(call);
    }
  }
  ~Descriptor() { close(number_); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int number() const { return number_; }

 private:
  int number_;
};

// What a new process does before its program starts.
class Preparation {
 public:
  Preparation(const Descriptor& output, int descriptor) {
    posix_spawn_file_actions_init(&actions_);
    for (const int each : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
      posix_spawn_file_actions_addopen(&actions_, each, "/dev/null", O_RDWR, 0);
    }
    posix_spawn_file_actions_adddup2(&actions_, output.number(), descriptor);
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

// Whether it ended before a signal of the set came. Keeps what it wrote to the pipe.
bool endsBefore(const sigset_t& signals, pid_t pid, const Descriptor& pipe, std::string* output) {
  // Verilator writes its messages in small pieces, and each would wake up who waits for them.
  constexpr int kMilliseconds = 10;
  const Descriptor end(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)), "pidfd_open");
  const Descriptor arriving(signalfd(-1, &signals, SFD_CLOEXEC), "signalfd");
  std::array<pollfd, 2> sources = {{{end.number(), POLLIN, 0}, {arriving.number(), POLLIN, 0}}};
  std::vector<char> piece(kPipeBytes);
  int ready = 0;
  do {
    ready = poll(sources.data(), sources.size(), kMilliseconds);
    const ssize_t count = read(pipe.number(), piece.data(), piece.size());
    output->append(piece.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
  } while (ready <= 0);
  return sources[1].revents == 0;
}

int waitFor(pid_t pid) {
  int status = 0;
  while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  return status;
}

}  // namespace

Ended run(const std::vector<std::string>& words, int descriptor, const apps::HeldSignals& signals) {
  // If the caller ignores it, nothing tells how the program ended.
  signal(SIGCHLD, SIG_DFL);
  // Unlike a file, a pipe is neither cut by a limit nor emptied by who opens /dev/stderr again.
  std::array<int, 2> ends = {-1, -1};
  pipe2(ends.data(), O_CLOEXEC);
  const Descriptor reader(ends[0], "pipe2");
  const Descriptor writer(ends[1], "pipe2");
  fcntl(reader.number(), F_SETFL, O_NONBLOCK);
  fcntl(reader.number(), F_SETPIPE_SZ, kPipeBytes);
  const pid_t pid = start(words, Preparation(writer, descriptor));
  std::string output;
  const bool isDone = endsBefore(signals.held(), pid, reader, &output);
  if (!isDone) {
    kill(-pid, SIGKILL);
  }
  const int status = waitFor(pid);
  if (!isDone) {
    throw std::runtime_error(words[0] + ": stopped by a signal");
  }
  return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), output};
}

}  // namespace rulecheck
