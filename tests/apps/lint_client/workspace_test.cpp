#include "lint_client/workspace.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "common/message_file.h"

namespace {

namespace fs = std::filesystem;

class Workspaces : public testing::Test {
 protected:
  Workspaces() {
    std::string name = (fs::temp_directory_path() / "workspace_test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
      throw std::runtime_error("no temporary directory");
    }
    base_ = name;
    fs::create_directory(base_ / "my rtl");
    for (const std::string file : {"my rtl/a.v", "my rtl/b.vh", "c d;e.sv"}) {
      apps::writeFile((base_ / file).string(), file);
    }
  }
  ~Workspaces() override { fs::remove_all(base_); }

  fs::path base_;
};

TEST_F(Workspaces, NameFilesPlainly) {
  const std::string a = (base_ / "my rtl/a.v").string();
  const std::string c = (base_ / "c d;e.sv").string();
  const lint_client::Workspace workspace({a, c, a});
  ASSERT_EQ((std::vector<std::string>{"0/a.v", "1/c_d_e.sv", "2/a.v"}), workspace.files());
  ASSERT_EQ((std::vector<std::string>{"in0", "in1"}), workspace.directories());
  EXPECT_EQ("my rtl/a.v", apps::readFile((workspace.directory() / "0/a.v").string()));
  EXPECT_EQ("c d;e.sv", apps::readFile((workspace.directory() / "1/c_d_e.sv").string()));
  EXPECT_EQ("my rtl/b.vh", apps::readFile((workspace.directory() / "in0/b.vh").string()));
}

TEST_F(Workspaces, KnowTheOriginalNames) {
  const std::string a = (base_ / "my rtl/a.v").string();
  const lint_client::Workspace workspace({a, "plain.v"});
  EXPECT_EQ(a, workspace.original("0/a.v"));
  EXPECT_EQ("plain.v", workspace.original("1/plain.v"));
  EXPECT_EQ((base_ / "my rtl/b.vh").string(), workspace.original("in0/b.vh"));
  EXPECT_EQ("x/y.vh", workspace.original("in1/x/y.vh"));
  for (const char* const other : {"other.v", "2/other.v", "/usr/x.v", "", "<built-in>"}) {
    EXPECT_EQ(other, workspace.original(other));
  }
}

TEST_F(Workspaces, ReachFilesInTheCurrentDirectory) {
  const lint_client::Workspace workspace({"plain.v"});
  EXPECT_EQ(fs::current_path(), fs::canonical(workspace.directory() / "in0"));
  EXPECT_EQ(fs::current_path() / "plain.v", fs::read_symlink(workspace.directory() / "0/plain.v"));
}

TEST_F(Workspaces, GoAwayAndLeaveTheFiles) {
  fs::path directory;
  {
    const lint_client::Workspace workspace({(base_ / "my rtl/a.v").string()});
    directory = workspace.directory();
    EXPECT_TRUE(fs::exists(directory));
  }
  EXPECT_FALSE(fs::exists(directory));
  EXPECT_TRUE(fs::exists(base_ / "my rtl/a.v"));
}

}  // namespace
