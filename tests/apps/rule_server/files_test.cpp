// SPDX-License-Identifier: Apache-2.0

// Files in a directory, and nowhere else.

#include "rule_server/files.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <map>
#include <string>
#include <utility>

#include "../common/directory.h"
#include "common/message_file.h"

namespace {

namespace fs = std::filesystem;

// A directory "inside" with files and links in it, next to others.
class DirectoryFiles : public testing::Test {
 protected:
  DirectoryFiles() {
    for (const char* const folder :
         {"inside/sub", "inside/.ssh", "inside-out", "outside/private"}) {
      fs::create_directories(base_ / folder);
    }
    apps::writeFile(base_ / "inside/file", "content");
    apps::writeFile(base_ / "inside/.profile", "hidden");
    apps::writeFile(base_ / "outside/file", "secret");
    apps::writeFile(base_ / "inside-out/file", "secret");
    for (const auto& [name, target] :
         std::map<const char*, const char*>{{"way-out", "../outside"},
                                            {"file-outside", "../outside/file"},
                                            {"nowhere", "../outside/new"},
                                            {"to-private", "../outside/private/file"},
                                            {"file-inside", "file"},
                                            {"to-hidden", ".profile"},
                                            {"file.html", "file"},
                                            {"loop", "loop"},
                                            {"../outside/loop", "loop"},
                                            {"../alias", "inside"}}) {
      fs::create_symlink(target, base_ / "inside" / name);
    }
  }

  const tests::Directory directory_;
  const fs::path base_ = fs::canonical(directory_.path());
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

TEST_F(DirectoryFiles, MayBeALinkAndMustExist) {
  rule_server::DirectoryFiles files(base_ / "alias");
  EXPECT_EQ("content", files.read("file"));
  EXPECT_EQ("content", files.read((base_ / "alias/file").string()));
  EXPECT_ANY_THROW(rule_server::DirectoryFiles(base_ / "missing"));
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

// Whether something exists outside, and what it is, makes no difference.
TEST_F(DirectoryFiles, RefusesPathsThatLeadOut) {
  rule_server::DirectoryFiles files(base_ / "inside");
  const std::string base = base_.string();
  const std::string out = ": outside of the server's directory, or unreachable";
  const std::string hidden = ": a hidden file";
  const std::string irregular = ": not a regular file";
  const std::pair<std::string, std::string> cases[] = {
      {"../outside/file", out},
      {"../outside/missing", out},
      {"../outside/private/file", out},
      {"../outside/loop", out},
      {"../outside/file/file", out},
      {"sub/../../outside/file", out},
      {base + "/outside/file", out},
      {base + "/inside/../outside/file", out},
      {base + "/inside-out/file", out},
      {"way-out/file", out},
      {"way-out/new", out},
      {"file-outside", out},
      {"to-private", out},
      {"loop", out},
      {"..", out},
      {"/", out},
      {"/dev/null", out},
      {"sub/" + std::string(5000, 'n'), out},
      {"nowhere", irregular},
      {"sub", irregular},
      {"", hidden},
      {".", hidden},
      {"to-hidden", hidden},
      {".ssh/keys", hidden},
      {".profile", hidden},
      {"sub/.profile", hidden},
      {"file.html", ": a link to a file with another extension"},
  };
  fs::permissions(base_ / "outside/private", fs::perms::none);
  fs::permissions(base_, fs::perms{0755});
  const bool root = geteuid() == 0;  // which reads all folders
  ASSERT_TRUE(!root || seteuid(65534) == 0);
  for (const auto& [path, reason] : cases) {
    EXPECT_EQ(path + reason, errorOf([&, &path = path] { files.read(path); }));
    EXPECT_EQ(path + reason, errorOf([&, &path = path] { files.write(path, "x"); }));
  }
  for (const std::string& path : {std::string("fi\0le", 5), std::string("file\0", 5)}) {
    EXPECT_EQ("a path with a zero byte in it", errorOf([&] { files.read(path); }));
  }
  for (const std::string path : {"file", "missing", "private/file", "loop"}) {
    const std::string inside =
        "../outside/" + path + (path == "private/file" ? "/.." : "") + "/../../inside/file";
    EXPECT_EQ("none", errorOf([&] { files.read(inside); })) << inside;
  }
  EXPECT_TRUE(!root || seteuid(0) == 0);
  fs::permissions(base_ / "outside/private", fs::perms::owner_all);
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

TEST_F(DirectoryFiles, SaysWhatFails) {
  rule_server::DirectoryFiles files(base_ / "inside");
  EXPECT_EQ("missing: cannot be read: No such file or directory",
            errorOf([&] { files.read("missing"); }));
  EXPECT_EQ("missing/file: cannot be written: No such file or directory",
            errorOf([&] { files.write("missing/file", ""); }));
}

}  // namespace
