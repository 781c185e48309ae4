// SPDX-License-Identifier: Apache-2.0

// Files in a directory, and nowhere else.

#include "rule_server/files.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>
#include <string>

#include "common/message_file.h"

namespace {

namespace fs = std::filesystem;

// A directory "inside" with files and links in it, beside a directory "outside".
class DirectoryFiles : public testing::Test {
 protected:
  DirectoryFiles() : base_(makeBase()) {
    fs::create_directories(base_ / "inside/sub");
    fs::create_directories(base_ / "inside-out");
    fs::create_directories(base_ / "outside");
    apps::writeFile((base_ / "inside/file").string(), "content");
    apps::writeFile((base_ / "outside/file").string(), "secret");
    apps::writeFile((base_ / "inside-out/file").string(), "secret");
    fs::create_symlink(base_ / "outside", base_ / "inside/way-out");
    fs::create_symlink(base_ / "outside/file", base_ / "inside/file-outside");
    fs::create_symlink(base_ / "outside/new", base_ / "inside/nowhere");
    fs::create_symlink("file", base_ / "inside/file-inside");
    fs::create_directories(base_ / "inside/.ssh");
    apps::writeFile((base_ / "inside/.profile").string(), "hidden");
    fs::create_symlink(".profile", base_ / "inside/to-hidden");
    fs::create_symlink("file", base_ / "inside/file.html");
    fs::create_symlink("loop", base_ / "inside/loop");
  }
  ~DirectoryFiles() override { fs::remove_all(base_); }

  static fs::path makeBase() {
    std::string name = (fs::temp_directory_path() / "files_test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
      throw std::runtime_error("no temporary directory");
    }
    return fs::canonical(name);
  }

  const fs::path base_;
};

TEST_F(DirectoryFiles, ReadsAndWritesWhatIsInIt) {
  rule_server::DirectoryFiles files(base_ / "inside");
  EXPECT_EQ("content", files.read("file"));
  EXPECT_EQ("content", files.read("sub/../file"));
  EXPECT_EQ("content", files.read((base_ / "inside/file").string()));
  EXPECT_EQ("content", files.read("file-inside"));
  files.write("sub/new", std::string("a\0b", 3));
  EXPECT_EQ(std::string("a\0b", 3), files.read("sub/new"));
  files.write("file", "x");
  EXPECT_EQ("x", files.read("file"));
}

TEST_F(DirectoryFiles, TakesADirectoryThatIsALink) {
  fs::create_symlink(base_ / "inside", base_ / "alias");
  rule_server::DirectoryFiles files(base_ / "alias");
  EXPECT_EQ("content", files.read("file"));
  EXPECT_EQ("content", files.read((base_ / "alias/file").string()));
}

TEST_F(DirectoryFiles, MustExist) {
  EXPECT_ANY_THROW(rule_server::DirectoryFiles(base_ / "missing"));
}

TEST_F(DirectoryFiles, RefusesPathsThatLeadOut) {
  rule_server::DirectoryFiles files(base_ / "inside");
  for (const std::string& path : {std::string("../outside/file"),
                                  std::string("sub/../../outside/file"),
                                  (base_ / "outside/file").string(),
                                  (base_ / "inside/../outside/file").string(),
                                  (base_ / "inside-out/file").string(),
                                  std::string("way-out/file"),
                                  std::string("file-outside"),
                                  std::string("way-out/new"),
                                  std::string("nowhere"),
                                  std::string("loop"),
                                  std::string("to-hidden"),
                                  std::string("sub"),
                                  std::string("."),
                                  std::string(".."),
                                  std::string("/"),
                                  std::string(""),
                                  std::string("fi\0le", 5),
                                  std::string("file\0", 5),
                                  std::string(".ssh/keys"),
                                  std::string(".profile"),
                                  std::string("sub/.profile"),
                                  std::string("file.html"),
                                  std::string("sub/") + std::string(5000, 'n'),
                                  std::string("/dev/null")}) {
    SCOPED_TRACE(path.substr(0, 80));
    EXPECT_THROW(files.read(path), apps::FileError);
    EXPECT_THROW(files.write(path, "x"), apps::FileError);
  }
  EXPECT_EQ("secret", apps::readFile((base_ / "outside/file").string()));
  EXPECT_EQ("secret", apps::readFile((base_ / "inside-out/file").string()));
  EXPECT_FALSE(fs::exists(base_ / "outside/new"));
  EXPECT_EQ("hidden", apps::readFile((base_ / "inside/.profile").string()));
}

TEST_F(DirectoryFiles, RefusesFilesThatAreTooLong) {
  rule_server::DirectoryFiles files(base_ / "inside");
  fs::resize_file(base_ / "inside/file", 16U << 20);
  EXPECT_EQ(16U << 20, files.read("file").size());
  fs::resize_file(base_ / "inside/file", (16U << 20) + 1);
  EXPECT_THROW(files.read("file"), apps::FileError);
}

TEST_F(DirectoryFiles, MayBeOneThatHoldsAHome) {
  const std::string home = (base_ / "inside/sub").string();
  ASSERT_EQ(0, setenv("HOME", home.c_str(), 1));
  fs::create_symlink(base_ / "inside", base_ / "alias");
  for (const fs::path& directory :
       {fs::path("/"), fs::path(home), base_ / "inside", base_ / "alias", base_}) {
    EXPECT_TRUE(rule_server::holdsHome(directory)) << directory;
  }
  EXPECT_FALSE(rule_server::holdsHome(base_ / "outside"));
  fs::create_directories(home + "/reports");
  EXPECT_FALSE(rule_server::holdsHome(home + "/reports"));
  ASSERT_EQ(0, unsetenv("HOME"));
  EXPECT_TRUE(rule_server::holdsHome(getpwuid(getuid())->pw_dir));
}

// What an attempt to use a file says, or "none".
template <typename Work>
std::string errorOf(Work work) {
  try {
    work();
  } catch (const apps::FileError& error) {
    return error.what();
  }
  return "none";
}

// Whether something exists outside, and what it is.
TEST_F(DirectoryFiles, TellsNothingOfWhatIsOutside) {
  rule_server::DirectoryFiles files(base_ / "inside");
  fs::create_directories(base_ / "outside/private");
  fs::create_symlink("loop", base_ / "outside/loop");
  fs::create_symlink("../outside/private/file", base_ / "inside/to-private");
  fs::permissions(base_ / "outside/private", fs::perms::none);
  fs::permissions(base_, fs::perms{0755});
  const bool root = geteuid() == 0;  // which reads all folders
  ASSERT_TRUE(!root || seteuid(65534) == 0);
  for (const char* const path : {"../outside/file", "../outside/missing", "../outside/private/file",
                                 "../outside/loop", "../outside/file/file", "to-private", "loop"}) {
    const std::string error =
        std::string(path) + ": outside of the server's directory, or unreachable";
    EXPECT_EQ(error, errorOf([&] { files.read(path); }));
    EXPECT_EQ(error, errorOf([&] { files.write(path, ""); }));
  }
  for (const char* const path :
       {"../outside/file/../../inside/file", "../outside/missing/../../inside/file",
        "../outside/private/file/../../../inside/file", "../outside/loop/../../inside/file"}) {
    EXPECT_EQ("none", errorOf([&] { files.read(path); })) << path;
  }
  EXPECT_TRUE(!root || seteuid(0) == 0);
  fs::permissions(base_ / "outside/private", fs::perms::owner_all);
}

TEST_F(DirectoryFiles, SaysWhatFails) {
  rule_server::DirectoryFiles files(base_ / "inside");
  EXPECT_EQ("missing: cannot be read", errorOf([&] { files.read("missing"); }));
  EXPECT_EQ("missing/file: cannot be written: No such file or directory",
            errorOf([&] { files.write("missing/file", ""); }));
}

}  // namespace
