// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/lint/verilator.h"

#include <re2/re2.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <iterator>
#include <system_error>

#include "common/command_line.h"
#include "common/held_signals.h"
#include "common/message_file.h"
#include "rulecheck/lint/process.h"

namespace rulecheck {
namespace {

using vok::rulecheck::CreateViolation;

namespace fs = std::filesystem;

std::string temporaryFolder() {
  const char* folder = getenv("TMPDIR");
  return folder == nullptr || *folder == '\0' ? "/tmp" : folder;
}

// A directory of its own, which is removed with the object. Verilator writes there which
// files it read; it tells that in no other way.
class TemporaryDirectory {
 public:
  TemporaryDirectory() : path_(temporaryFolder() + "/rulecheck-XXXXXX") {
    if (mkdtemp(path_.data()) == nullptr) {
      throw apps::CannotRun(temporaryFolder() + ": " + std::generic_category().message(errno));
    }
  }
  ~TemporaryDirectory() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

// The rule of Make that Verilator wrote, or nothing.
std::string dependenciesIn(const std::string& directory) {
  for (const fs::directory_entry& entry : fs::directory_iterator(directory)) {
    if (entry.path().extension() == ".d") {
      return apps::readFile(entry.path().string());
    }
  }
  return "";
}

std::string lastLine(std::string text) {
  text.erase(text.find_last_not_of('\n') + 1);
  return text.substr(text.rfind('\n') + 1);
}

// Throws if a run without an error looked at no rule, or not at all rules, or doesn't tell which
// files it read. A complete check ends with writing a program to /dev/null.
void checkThatItChecked(const std::string& program, const Ended& ended,
                        const std::string& dependencies, bool hasMessages) {
  if (ended.status != 0) {
    const std::string line = hasMessages ? "" : lastLine(ended.output);
    throw apps::CannotRun(program + " failed: " +
                          (line.empty() ? "exit status " + std::to_string(ended.status) : line));
  }
  if (!dependencies.empty() && dependencies.back() != '\n') {
    throw apps::CannotRun(program + ": cannot write all of a file to " + temporaryFolder());
  }
  if (!re2::RE2::PartialMatch(dependencies, "^(?:.* )?/dev/null .*: ")) {
    throw apps::CannotRun(program + ": checked nothing");
  }
}

}  // namespace

std::vector<CreateViolation> lint(const std::string& program,
                                  const std::vector<std::string>& arguments, const Catalog& rules) {
  const fs::path here = fs::current_path();
  // Or a signal would leave the directory behind.
  const apps::HeldSignals signals;
  const TemporaryDirectory directory;
  std::vector<std::string> words = {program, "--lint-only", "-Wall", "-Wno-fatal"};
  words.insert(words.end(), arguments.begin(), arguments.end());
  words.insert(words.end(), {"-MMD", "--Mdir", directory.path()});
  const Ended ended = run(words, STDERR_FILENO, signals);

  std::vector<CreateViolation> found = parseMessages(ended.output, here);
  const std::string dependencies = dependenciesIn(directory.path());
  if (std::none_of(found.begin(), found.end(), isError)) {
    checkThatItChecked(program, ended, dependencies, !found.empty());
  }
  const auto preprocess = [&] {
    words.emplace_back("-E");
    const Ended preprocessed = run(words, STDOUT_FILENO, signals);
    return preprocessed.status == 0 ? preprocessed.output : "";
  };
  std::vector<CreateViolation> unchecked =
      uncheckedRules(arguments, dependencies, found, here, rules, preprocess);
  std::move(unchecked.begin(), unchecked.end(), std::back_inserter(found));
  return found;
}

}  // namespace rulecheck
