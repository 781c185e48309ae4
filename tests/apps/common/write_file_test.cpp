// SPDX-License-Identifier: Apache-2.0

// Files appear whole or not at all, whatever fails and whenever the program ends.

#include <dlfcn.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "common/message_file.h"
#include "directory.h"

namespace {

namespace fs = std::filesystem;

using testing::AnyOf;
using testing::ElementsAre;

// What the next call of a function of the C library does first, and whether it fails then.
struct Fault {
  std::string function;
  std::function<void()> act = [] {};
  int error = 0;
};
Fault fault;

bool fails(const char* function) {
  if (fault.function != function) {
    return false;
  }
  const Fault now = std::exchange(fault, {});
  now.act();
  errno = now.error;
  return now.error != 0;
}

template <typename Function>
Function* original(const char* name, Function*) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

ssize_t write(int file, const void* bytes, size_t count) {
  const bool failing = fails("write");
  // Half of it is written, then the rest fails.
  const ssize_t done = original("write", &write)(file, bytes, failing ? count / 2 : count);
  if (failing) {
    fault = {"write, again", [] {}, errno};
  }
  return fails("write, again") ? -1 : done;
}

int fsync(int file) {
  return fails("fsync") ? -1 : original("fsync", &fsync)(file);
}

int fchmod(int file, mode_t mode) noexcept {
  return fails("fchmod") ? -1 : original("fchmod", &fchmod)(file, mode);
}

int renameat(int from, const char* name, int to, const char* target) noexcept {
  return fails("renameat") ? -1 : original("renameat", &renameat)(from, name, to, target);
}

}  // extern "C"

namespace {

const char* const kSteps[] = {"fchmod", "write", "fsync", "renameat"};
const std::string kOld = "what was there before";
const std::string kNew(100000, 'n');

class WrittenFiles : public testing::Test {
 protected:
  WrittenFiles() { apps::writeFile(path(), kOld); }
  ~WrittenFiles() override { fault = {}; }

  std::string path(const std::string& name = "f") const { return directory_.path() + "/" + name; }
  std::string content() const { return apps::readFile(path()); }

  std::vector<std::string> names() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(directory_.path())) {
      names.push_back(entry.path().filename().string());
    }
    return names;
  }

  static mode_t modeOf(const std::string& path) {
    struct stat status = {};
    EXPECT_EQ(0, stat(path.c_str(), &status)) << path;
    return status.st_mode;
  }

  void writeAndRaise(int signal, const char* step) const {
    fault = Fault{step, [signal] { raise(signal); }};
    apps::writeFile(path(), kNew);
  }

  // The reason why the file can't be written, or nothing.
  static std::string failure(const std::string& path) {
    try {
      apps::writeFile(path, kNew);
      return "";
    } catch (const apps::FileError& error) {
      const std::string start = path + ": cannot be written: ";
      EXPECT_THAT(error.what(), testing::StartsWith(start));
      return std::string(error.what()).substr(start.size());
    }
  }

 protected:
  const tests::Directory directory_;
};

TEST_F(WrittenFiles, StayAsTheyWereAfterEachFailure) {
  for (const char* const step : kSteps) {
    SCOPED_TRACE(step);
    fault = {step, [] {}, ENOSPC};
    EXPECT_EQ("No space left on device", failure(path()));
    EXPECT_EQ(kOld, content());
    EXPECT_THAT(names(), ElementsAre("f"));
  }
}

// Only SIGKILL ends the program at once, and leaves the temporary file.
TEST_F(WrittenFiles, AreWholeAfterASignalAtEachStep) {
  for (const char* const step : kSteps) {
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGKILL}) {
      SCOPED_TRACE(step + std::to_string(signal));
      apps::writeFile(path(), kOld);
      EXPECT_EXIT(writeAndRaise(signal, step), testing::KilledBySignal(signal), "");
      EXPECT_EQ(signal == SIGKILL ? kOld : kNew, content());
      EXPECT_EQ(signal == SIGKILL, names() != std::vector<std::string>{"f"});
      fs::remove_all(directory_.path());
      fs::create_directory(directory_.path());
    }
  }
}

TEST_F(WrittenFiles, AreThoseOfOneOfTwoWriters) {
  const std::string other(kNew.size() + 1, 'o');
  for (int i = 0; i < 20; ++i) {
    std::thread first([this] { apps::writeFile(path(), kNew); });
    apps::writeFile(path(), other);
    first.join();
    EXPECT_THAT(content(), AnyOf(kNew, other));
  }
  EXPECT_THAT(names(), ElementsAre("f"));
}

TEST_F(WrittenFiles, KeepTheirModeAndGetTheUsualOneIfTheyAreNew) {
  for (const mode_t mode : {0600, 0644, 0755}) {
    chmod(path().c_str(), mode);
    apps::writeFile(path(), kNew);
    EXPECT_EQ(S_IFREG | mode, modeOf(path()));
  }
  chmod(path().c_str(), 0600);
  fault = Fault{"fchmod", [this] {
                  for (const auto& entry : fs::directory_iterator(directory_.path())) {
                    EXPECT_EQ(mode_t{S_IFREG | 0600}, modeOf(entry.path())) << entry.path();
                  }
                }};
  apps::writeFile(path(), kNew);
  const mode_t before = umask(027);
  apps::writeFile(path("new"), kNew);
  umask(before);
  EXPECT_EQ(mode_t{S_IFREG | 0640}, modeOf(path("new")));
}

TEST_F(WrittenFiles, AreReachedThroughLinksThatStay) {
  fs::create_directory(path("folder"));
  fs::create_symlink("../f", path("folder/link"));
  fs::create_symlink("folder/link", path("second"));
  fs::create_symlink("missing", path("third"));
  fs::create_symlink("loop", path("loop"));
  apps::writeFile(path("second"), kNew);
  EXPECT_EQ(kNew, content());
  EXPECT_TRUE(fs::is_symlink(path("folder/link")) && fs::is_symlink(path("second")));
  apps::writeFile(path("third"), kNew);
  EXPECT_EQ(kNew, apps::readFile(path("missing")));
  EXPECT_TRUE(fs::is_symlink(path("third")));
  EXPECT_EQ("Too many levels of symbolic links", failure(path("loop")));
}

TEST_F(WrittenFiles, ThatAreNotRegularAreWrittenToInPlace) {
  ASSERT_EQ(0, mkfifo(path("fifo").c_str(), 0600));
  std::string read;
  std::thread reader([&] { read = apps::readFile(path("fifo")); });
  apps::writeFile(path("fifo"), kNew);
  reader.join();
  EXPECT_EQ(kNew, read);
  EXPECT_TRUE(fs::is_fifo(path("fifo")));
  const int open_file = open(path().c_str(), O_RDWR | O_CLOEXEC);
  fs::remove(path());
  apps::writeFile("/dev/fd/" + std::to_string(open_file), kNew);
  struct stat status = {};
  fstat(open_file, &status);
  close(open_file);
  EXPECT_EQ(static_cast<off_t>(kNew.size()), status.st_size);
  EXPECT_EQ("", failure("/dev/null"));
  EXPECT_EQ("No space left on device", failure("/dev/full"));
}

TEST_F(WrittenFiles, ThatCannotBeWrittenSayWhy) {
  EXPECT_EQ("No such file or directory", failure(path("missing/f")));
  EXPECT_EQ("Not a directory", failure(path("f/g")));
  EXPECT_EQ("Is a directory", failure(path("")));
  EXPECT_EQ("No such file or directory", failure(""));
  EXPECT_EQ("File name too long", failure(path(std::string(256, 'x'))));
  EXPECT_THAT(names(), ElementsAre("f"));
}

// Root may write to all files.
TEST_F(WrittenFiles, ThatAreProtectedStay) {
  const bool root = geteuid() == 0;
  fs::permissions(path(), fs::perms{0444});
  ASSERT_TRUE(!root || (chmod(path("").c_str(), 0777) == 0 && seteuid(65534) == 0));
  EXPECT_EQ("Permission denied", failure(path()));
  EXPECT_TRUE(!root || seteuid(0) == 0);
  fs::permissions(path(), fs::perms{0666});
  fs::permissions(path(""), fs::perms{0555});
  EXPECT_TRUE(!root || seteuid(65534) == 0);
  EXPECT_EQ("Permission denied", failure(path()));
  EXPECT_TRUE(!root || seteuid(0) == 0);
  fs::permissions(path(""), fs::perms{0755});
  EXPECT_EQ(kOld, content());
  EXPECT_THAT(names(), ElementsAre("f"));
}

}  // namespace
