// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/lint/verilator.h"

#include <re2/re2.h>

#include <algorithm>
#include <cstddef>
#include <set>
#include <sstream>
#include <string_view>
#include <system_error>

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

// Calls work with each name in the lint_off comments of a text, and with its comment. A
// string has no comments; if a quote has no partner in its line, the comments after it count.
template <typename Work>
void forEachLintOff(StringPiece text, Work work) {
  static const RE2 token(R"re([`\\]"|"(?:\\(?s:.)|[^"\\\n])*"|(//[^\n]*|/\*(?s:.*?)(?:\*/|\z)))re",
                         RE2::Latin1);
  static const RE2 off(R"(^/[/*]\s*verilator\s+lint_off\s+([\w\s,]+))", RE2::Latin1);
  static const RE2 word(R"((\w+))", RE2::Latin1);
  for (StringPiece comment; RE2::FindAndConsume(&text, token, &comment);) {
    StringPiece names;
    RE2::PartialMatch(comment, off, &names);
    for (std::string name; RE2::FindAndConsume(&names, word, &name);) {
      work(name, comment);
    }
  }
}

// Which lint_off comments Verilator skips. Macros move the others to other lines and files,
// so that only names tell. It doesn't preprocess the files of libraries.
class Skipped {
 public:
  explicit Skipped(std::function<std::string()> preprocess) : preprocess_(std::move(preprocess)) {}

  bool has(const std::string& file, const std::string& name) {
    if (preprocess_) {
      read(preprocess_());
      preprocess_ = nullptr;
    }
    return files_.count(file) != 0 && names_.count(name) == 0;
  }

 private:
  void read(const std::string& text) {
    static const RE2 line(R"re((?m)^`line \d+ "([^"\n]+)")re", RE2::Latin1);
    StringPiece rest = text;
    for (std::string file; RE2::FindAndConsume(&rest, line, &file);) {
      files_.insert(fs::path(file).lexically_normal());
    }
    forEachLintOff(text, [this](const std::string& name, StringPiece) { names_.insert(name); });
  }

  // Until it is called.
  std::function<std::string()> preprocess_;
  std::set<std::string> files_;
  std::set<std::string> names_;
};

Place placeIn(const std::string& content, std::size_t offset, const std::string& file) {
  const auto here = content.begin() + static_cast<std::ptrdiff_t>(offset);
  const std::size_t start = offset == 0 ? 0 : content.rfind('\n', offset - 1) + 1;
  Place place{file};
  place.line = static_cast<int>(std::count(content.begin(), here, '\n')) + 1;
  place.column = static_cast<int>(offset - start) + 1;
  place.source = content.substr(start, content.find('\n', offset) - start);
  return place;
}

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
      : rules_(rules), directory_(std::move(directory)), skipped_(std::move(preprocess)) {}

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

  // Verilator reads the three kinds of files with the same paths, so the text decides.
  void addFile(const std::string& path) {
    const std::string content = apps::readFile(directory_ / path);
    const bool isConfiguration = content.find("`verilator_config") != std::string::npos;
    if (!isConfiguration) {
      addComments(content, path);
    }
    std::istringstream lines(isConfiguration ? content : withoutComments(content));
    Place place{path};
    for (std::string line; std::getline(lines, line);) {
      ++place.line;
      place.source = line;
      if (isConfiguration) {
        addConfiguration(line, place);
      } else {
        addArguments(line, place, {});
      }
    }
  }

  // The rules of the set are on again.
  void addArguments(const std::string& line, const Place& place,
                    const std::set<std::string>& onAgain) {
    static const RE2 argument(R"((?:^|[\s"'])(--?Wno-([\w-]+)))", RE2::Latin1);
    StringPiece rest = line;
    StringPiece whole;
    for (std::string name; RE2::FindAndConsume(&rest, argument, &whole, &name);) {
      Place here = place;
      here.column = place.file.empty() ? 0 : static_cast<int>(whole.data() - line.data()) + 1;
      addNamed(name, here, whole.as_string(), onAgain);
    }
  }

  std::vector<CreateViolation> take() { return std::move(violations_); }

 private:
  void addComments(const std::string& content, const std::string& path) {
    const std::size_t condition = content.find("`if");
    forEachLintOff(content, [&](const std::string& name, StringPiece comment) {
      const auto offset = static_cast<std::size_t>(comment.data() - content.data());
      if (offset < condition || !skipped_.has(path, name)) {
        addNamed(name, placeIn(content, offset, path), "lint_off " + name, {});
      }
    });
  }

  void addConfiguration(const std::string& line, const Place& place) {
    static const RE2 off(R"(^\s*(lint_off\b[^/]*))", RE2::Latin1);
    static const RE2 rule(R"re(-(?:rule|msg)\s+"?(\w+))re", RE2::Latin1);
    std::string text;
    if (RE2::PartialMatch(line, off, &text)) {
      std::string name;
      RE2::PartialMatch(text, rule, &name);
      addNamed(name, place, line, {});
    }
  }

  const Catalog& rules_;
  fs::path directory_;
  Skipped skipped_;
  std::vector<CreateViolation> violations_;
};

// Blanks separate the names, which Verilator neither quotes nor lets have one.
std::set<std::string> filesOf(const std::vector<std::string>& arguments,
                              const std::string& dependencies) {
  std::set<std::string> files;
  for (const std::string& argument : arguments) {
    files.insert(fs::path(argument).lexically_normal());
  }
  std::istringstream words(dependencies.substr(dependencies.find(':') + 1));
  for (std::string word; words >> word;) {
    files.insert(fs::path(word).lexically_normal());
  }
  return files;
}

bool isSource(const fs::path& path) {
  std::error_code ignored;
  return fs::is_regular_file(path, ignored) &&
         path.filename().string().compare(0, 13, "verilator_bin") != 0;
}

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
  for (const std::string& path : filesOf(arguments, dependencies)) {
    if (isSource(directory / path)) {
      unchecked.addFile(path);
    }
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
