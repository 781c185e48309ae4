// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/lint/verilator.h"

#include <re2/re2.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <set>
#include <sstream>
#include <string_view>
#include <system_error>
#include <utility>

#include "common/message_file.h"
#include "rulecheck/not_checked.h"
#include "rulecheck/place.h"

namespace rulecheck {
namespace {

using re2::StringPiece;
using vok::rulecheck::ArgList;
using vok::rulecheck::CreateViolation;

namespace fs = std::filesystem;

// Before the name of a rule on the command line.
constexpr std::string_view kOn = "-Wwarn-";

// Calls work with each name that a lint_off switches off, and with where it is: a comment, or a
// line of a configuration. The name is "", which means all, if the line has none, and if a macro
// makes it. Strings and escaped identifiers have no comments; if a quote has no partner in its
// line, the comments after it count.
template <typename Work>
void forEachLintOff(StringPiece text, Work work) {
  static const RE2 token(
      R"re([`]"|\\[^ \t\f\r\n]+|"(?:\\(?s:.)|[^"\\\n])*"|`define\s+\w+\(([^)]*)|)re"
      R"re((//[^\n]*|/\*(?s:.*?)(?:\*/|\z))|\b(lint_off\b(?:\s+-(?:rule|msg)\s+(\w+))?))re",
      RE2::Latin1);
  static const RE2 off(R"(^/[/*]\s*[Vv]erilator\s+lint_off\s+([\w\s,`]+))", RE2::Latin1);
  static const RE2 word(R"(([\w`]*\w))", RE2::Latin1);
  std::set<std::string> parameters;
  StringPiece added;
  StringPiece comment;
  StringPiece line;
  for (std::string rule; RE2::FindAndConsume(&text, token, &added, &comment, &line, &rule);) {
    std::string name;
    while (RE2::FindAndConsume(&added, word, &name)) {
      parameters.insert(name);
    }
    StringPiece names;
    RE2::PartialMatch(comment, off, &names);
    while (RE2::FindAndConsume(&names, word, &name)) {
      const bool isMade = parameters.count(name) != 0 || name.find('`') != std::string::npos;
      work(isMade ? "" : name, comment);
    }
    if (!line.empty()) {
      work(rule, line);
    }
  }
}

bool isReadable(const fs::path& path) {
  std::error_code ignored;
  return fs::is_regular_file(path, ignored) && access(path.c_str(), R_OK) == 0;
}

// Those behind the colon of a rule of Make, but not Verilator. It doesn't quote blanks in their
// names; names that lead to no file are one.
std::set<std::string> filesOf(const std::string& dependencies, const fs::path& directory) {
  static const RE2 list(".* : (.*)", RE2::Latin1);
  static const RE2 program("(?:.*/)?verilator_bin[^ /]*", RE2::Latin1);
  std::string text;
  RE2::PartialMatch(dependencies, list, &text);
  std::istringstream words(text);
  std::set<std::string> files;
  std::string path;
  for (std::string word; words >> word;) {
    if (!RE2::FullMatch(word, program)) {
      path += path.empty() ? word : ' ' + word;
    }
    if (isReadable(directory / path)) {
      files.insert(std::exchange(path, ""));
    }
  }
  if (!path.empty()) {
    files.insert(path);
  }
  return files;
}

// Which lint_off comments Verilator skips. Macros move the others to other lines and files,
// so that only names tell. It doesn't preprocess the files of libraries.
class Skipped {
 public:
  Skipped(std::function<std::string()> preprocess, fs::path directory)
      : preprocess_(std::move(preprocess)), directory_(std::move(directory)) {}

  // The files are all that Verilator read.
  bool has(const std::string& name, const std::string& file, const std::set<std::string>& files) {
    if (preprocess_) {
      read(preprocess_(), files);
      preprocess_ = nullptr;
    }
    return files_.count(file) != 0 && names_.count(name) == 0;
  }

 private:
  void read(const std::string& text, const std::set<std::string>& files) {
    static const RE2 line(R"re((?m)^`line \d+ "([^"\n]+)")re", RE2::Latin1);
    StringPiece rest = text;
    for (std::string file; RE2::FindAndConsume(&rest, line, &file);) {
      files_.insert(file);
    }
    forEachLintOff(text, [this](const std::string& name, StringPiece) { names_.insert(name); });
    // In a library, a file that is included can have other branches.
    if (std::any_of(files.begin(), files.end(), [this](const std::string& path) {
          return files_.count(path) == 0 && isReadable(directory_ / path) &&
                 apps::readFile(directory_ / path).find("`include") != std::string::npos;
        })) {
      files_.clear();
    }
  }

  // Until it is called.
  std::function<std::string()> preprocess_;
  fs::path directory_;
  std::set<std::string> files_;
  std::set<std::string> names_;
};

// The places in a text of offsets that grow.
class Places {
 public:
  Places(const std::string& text, const std::string& file) : text_(text), place_{file} {
    place_.line = 1;
  }

  const Place& at(std::size_t offset) {
    std::size_t end = 0;
    while ((end = text_.find('\n', start_)) < offset) {
      start_ = end + 1;
      ++place_.line;
    }
    place_.column = static_cast<int>(offset - start_) + 1;
    place_.source = text_.substr(start_, end - start_);
    return place_;
  }

 private:
  const std::string& text_;
  Place place_;
  std::size_t start_ = 0;
};

// A text with blanks for what Verilator takes for comments in a file of arguments.
std::string withoutComments(std::string text) {
  static const RE2 comment(R"((?m)(?:^|\s)(//.*)|^[ \t]*(/\*(?s:.*?)\*/))", RE2::Latin1);
  const std::string original = text;
  StringPiece rest = original;
  StringPiece line;
  for (StringPiece block; RE2::FindAndConsume(&rest, comment, &line, &block);) {
    const StringPiece found = line.empty() ? block : line;
    const auto start = text.begin() + (found.data() - original.data());
    std::replace_if(
        start, start + static_cast<std::ptrdiff_t>(found.size()), [](char c) { return c != '\n'; },
        ' ');
  }
  return text;
}

class Unchecked {
 public:
  Unchecked(const Catalog& rules, fs::path directory, std::function<std::string()> preprocess)
      : rules_(rules),
        directory_(std::move(directory)),
        skipped_(std::move(preprocess), directory_) {}

  void add(const std::string& rule, const ArgList& args, const char* reason) {
    CreateViolation violation;
    violation.set_rule_key(rule);
    *violation.mutable_args() = args;
    (*violation.mutable_dynamic_category_values())["waiver"] = reason;
    violations_.push_back(violation);
  }

  // What switches the rules off that a name means.
  void addNamed(const std::string& name, const Place& place, const std::string& text,
                const std::set<std::string>& onAgain) {
    ArgList args;
    if (place.file.empty()) {
      args.add_arg()->set_string_val("command line");
    } else {
      *args.add_arg()->mutable_ref() = referenceTo(place, directory_);
    }
    args.add_arg()->set_string_val(text);
    for (const std::string& rule : rulesNamed(name, rules_)) {
      if (onAgain.count(rule) == 0) {
        add(rule, args, place.file.empty() ? kOffByArgument : kOffInSource);
      }
    }
  }

  // Verilator reads the three kinds of files with the same paths, and a file can be of two.
  void addFile(const std::string& path, const std::set<std::string>& files) {
    if (!isReadable(directory_ / path)) {
      addNamed("", Place{path}, "cannot be read", {});
      return;
    }
    const std::string content = apps::readFile(directory_ / path);
    const std::size_t condition = content.find("`if");
    Places places(content, path);
    forEachLintOff(content, [&](const std::string& name, StringPiece where) {
      const auto offset = static_cast<std::size_t>(where.data() - content.data());
      const bool isClear = where[0] != '/' || offset < condition || name.empty();
      if (isClear || !skipped_.has(name, path, files)) {
        addNamed(name, places.at(offset), name.empty() ? "lint_off" : "lint_off " + name, {});
      }
    });
    std::istringstream lines(withoutComments(content));
    Place place{path};
    while (std::getline(lines, place.source)) {
      ++place.line;
      addArguments(place.source, place, {});
    }
  }

  // The rules of the set are on again.
  void addArguments(std::string line, const Place& place, const std::set<std::string>& onAgain) {
    static const RE2 argument(R"((?s)(?:^|\s)(--?Wno-([\w-]*)|(?:-D|\+define\+).*lint_off))",
                              RE2::Latin1);
    static const RE2 quote(R"(["'\\])", RE2::Latin1);
    if (!place.file.empty()) {
      RE2::GlobalReplace(&line, quote, "");
    }
    StringPiece rest = line;
    std::string name;
    for (std::string text; RE2::FindAndConsume(&rest, argument, &text, &name);) {
      addNamed(name, place, text, onAgain);
    }
  }

  std::vector<CreateViolation> take() { return std::move(violations_); }

 private:
  const Catalog& rules_;
  fs::path directory_;
  Skipped skipped_;
  std::vector<CreateViolation> violations_;
};

}  // namespace

std::vector<CreateViolation> uncheckedRules(const std::vector<std::string>& arguments,
                                            const std::string& dependencies,
                                            const std::vector<CreateViolation>& found,
                                            const fs::path& directory, const Catalog& rules,
                                            const std::function<std::string()>& preprocess) {
  Unchecked unchecked(rules, directory, preprocess);
  std::set<std::string> onAgain;
  for (auto argument = arguments.rbegin(); argument != arguments.rend(); ++argument) {
    unchecked.addArguments(*argument, {}, onAgain);
    if (argument->compare(0, kOn.size(), kOn) == 0) {
      onAgain.insert(argument->substr(kOn.size()));
    }
  }
  const std::set<std::string> files = filesOf(dependencies, directory);
  for (const std::string& path : files) {
    unchecked.addFile(path, files);
  }
  const auto error = std::find_if(found.begin(), found.end(), isError);
  if (error != found.end()) {
    std::set<std::string> violated;
    for (const CreateViolation& violation : found) {
      violated.insert(violation.rule_key());
    }
    for (const auto& rule : rules) {
      if (violated.count(rule.first) == 0) {
        unchecked.add(rule.first, error->args(), kCutShort);
      }
    }
  }
  return unchecked.take();
}

}  // namespace rulecheck
