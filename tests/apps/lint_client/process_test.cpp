#include "lint_client/process.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace {

lint_client::Ended shell(const std::string& script,
                         const std::vector<std::string>& arguments = {}) {
  std::vector<std::string> words = {"sh", "-c", script, "sh"};
  words.insert(words.end(), arguments.begin(), arguments.end());
  return lint_client::run(words, "/", {});
}

TEST(Processes, TellTheirErrorsAndHowTheyEnded) {
  const auto good = shell("echo out; echo err >&2");
  EXPECT_TRUE(good.successfully);
  EXPECT_EQ("err\n", good.errors);
  EXPECT_FALSE(shell("exit 3").successfully);
  EXPECT_FALSE(shell("kill -9 $$").successfully);
}

TEST(Processes, RunInTheirDirectory) {
  EXPECT_EQ("/\n", shell("pwd >&2").errors);
  EXPECT_EQ("/usr\n", lint_client::run({"sh", "-c", "pwd >&2"}, "/usr", {}).errors);
}

TEST(Processes, GetTheirArgumentsAsTheyAre) {
  const std::vector<std::string> arguments = {"a b", "$HOME", "'\"`\\", "", "*", "-x", "\xff;rm"};
  std::string expected;
  for (const std::string& argument : arguments) {
    expected += '[' + argument + ']';
  }
  EXPECT_EQ(expected, shell("printf '[%s]' \"$@\" >&2", arguments).errors);
}

TEST(Processes, HaveNoInput) {
  EXPECT_EQ("", shell("cat >&2").errors);
}

TEST(Processes, MayWriteMuch) {
  const auto ended = shell("i=0; while [ $i -lt 20000 ]; do echo 0123456789 >&2; i=$((i+1)); done");
  EXPECT_EQ(220000u, ended.errors.size());
}

TEST(Processes, ThatAreMissingAreNamed) {
  for (const char* const program : {"no-such-program", "/no/such/program", "/usr"}) {
    try {
      lint_client::run({program}, "/", {});
      ADD_FAILURE() << "ran " << program;
    } catch (const std::runtime_error& error) {
      EXPECT_THAT(error.what(), testing::StartsWith(std::string(program) + ": cannot be run: "));
    }
  }
}

}  // namespace
