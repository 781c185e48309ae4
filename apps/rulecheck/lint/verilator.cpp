// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/lint/verilator.h"

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

// A directory of its own, which is removed with the object. Verilator writes there which
// files it read; it tells that in no other way.
class TemporaryDirectory {
 public:
  TemporaryDirectory() : path_(fs::temp_directory_path() / "rulecheck-XXXXXX") {
    if (mkdtemp(path_.data()) == nullptr) {
      throw apps::CannotRun(path_ + ": " + std::generic_category().message(errno));
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
  if (!ended.successfully && std::none_of(found.begin(), found.end(), isError)) {
    throw apps::CannotRun(program + " failed: " + lastLine(ended.output));
  }
  const auto preprocess = [&] {
    words.emplace_back("-E");
    const Ended preprocessed = run(words, STDOUT_FILENO, signals);
    return preprocessed.successfully ? preprocessed.output : "";
  };
  std::vector<CreateViolation> unchecked =
      uncheckedRules(arguments, dependenciesIn(directory.path()), found, here, rules, preprocess);
  std::move(unchecked.begin(), unchecked.end(), std::back_inserter(found));
  return found;
}

}  // namespace rulecheck
