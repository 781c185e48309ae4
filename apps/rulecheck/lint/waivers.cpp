// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/lint/waivers.h"

#include <re2/re2.h>

#include <ctime>
#include <iomanip>
#include <list>
#include <map>
#include <optional>
#include <sstream>

#include "common/message_file.h"
#include "rulecheck/not_checked.h"
#include "rulecheck/place.h"

namespace rulecheck {
namespace {

using vok::rulecheck::ArgList;
using vok::rulecheck::CreateViolation;

// As a regular expression.
std::string patternOf(const std::string& glob) {
  std::string pattern;
  for (const char c : glob) {
    pattern += c == '*' ? ".*" : c == '?' ? "." : RE2::QuoteMeta(std::string(1, c));
  }
  return pattern;
}

RE2::Options quiet() {
  RE2::Options options(RE2::Quiet);
  options.set_encoding(RE2::Options::EncodingLatin1);
  options.set_dot_nl(true);
  return options;
}

struct Waiver {
  Waiver(const std::string& rulePattern, const std::string& filePattern, const std::string& regex)
      : rule(patternOf(rulePattern), quiet()),
        file("(?:.*/)?" + patternOf(filePattern), quiet()),
        message(regex, quiet()) {}

  bool isFor(const CreateViolation& violation) const {
    if (!RE2::FullMatch(violation.rule_key(), rule)) {
      return false;
    }
    const Place place = placeOf(violation.args());
    return RE2::FullMatch(place.file, file) && (line == 0 || line == place.line) &&
           matchesMessage(violation.args());
  }

  bool matchesMessage(const ArgList& args) const {
    for (const auto& arg : args.arg()) {
      if (arg.has_string_val() && RE2::PartialMatch(arg.string_val(), message)) {
        return true;
      }
    }
    return message.pattern().empty();
  }

  RE2 rule;
  RE2 file;
  RE2 message;
  int line = 0;
  std::string until;
  // What the finding keeps.
  std::string reason;
  // Where the waiver is, and what it says.
  std::string source;
};

bool isDay(const std::string& text) {
  std::tm day = {};
  std::istringstream(text) >> std::get_time(&day, "%Y-%m-%d");
  timegm(&day);  // makes another day of one that does not exist
  std::ostringstream same;
  same << std::put_time(&day, "%Y-%m-%d");
  return same.str() == text;
}

// The values by name, or nothing if one is unknown or given twice.
std::optional<std::map<std::string, std::string>> optionsIn(re2::StringPiece text) {
  static const RE2 option(R"(\s+(match|owner|until)=(\S+))", RE2::Latin1);
  std::map<std::string, std::string> values;
  std::string name;
  for (std::string value; RE2::Consume(&text, option, &name, &value);) {
    if (!values.emplace(name, value).second) {
      return std::nullopt;
    }
  }
  return text.empty() ? std::make_optional(values) : std::nullopt;
}

// As " (ann, until 2027-01-01)"; "" if both are absent.
std::string inParentheses(const std::string& owner, const std::string& until) {
  const std::string separator = owner.empty() || until.empty() ? "" : ", ";
  const std::string terms = owner + separator + (until.empty() ? "" : "until " + until);
  return terms.empty() ? "" : " (" + terms + ")";
}

// Adds the waiver of a line. Returns what is wrong, or nothing.
std::string parse(const std::string& text, std::list<Waiver>* waivers) {
  static const RE2 line(
      R"(\s*(\S+)\s+(\S+?)(?::([1-9]\d{0,8}))?((?:\s+\w+=\S+)*)\s+--\s+(.*\S)\s*)", RE2::Latin1);
  // What would be a part of the file's name otherwise: ":", ":3-5", and ":12" in ":12:3".
  static const RE2 place(R"(.*:[\d-]*|:.*)", RE2::Latin1);
  static const std::string syntax =
      "expected RULE FILE[:LINE] [match=REGEX] [owner=NAME] [until=YYYY-MM-DD] -- REASON";
  std::string rule;
  std::string file;
  std::string number;
  std::string options;
  std::string reason;
  if (!RE2::FullMatch(text, line, &rule, &file, &number, &options, &reason) ||
      RE2::FullMatch(file, place)) {
    return syntax;
  }
  auto values = optionsIn(options);
  if (!values) {
    return syntax + ", each option once";
  }
  const std::string& owner = (*values)["owner"];
  const std::string& until = (*values)["until"];
  if (!until.empty() && !isDay(until)) {
    return "until=" + until + ": no such day, expected YYYY-MM-DD";
  }
  waivers->emplace_back(rule, file, (*values)["match"]);
  Waiver& waiver = waivers->back();
  if (!waiver.message.ok()) {
    return "match=" + (*values)["match"] + ": " + waiver.message.error();
  }
  waiver.line = number.empty() ? 0 : std::stoi(number);
  waiver.until = until;
  waiver.reason = reason + inParentheses(owner, until);
  return isNotChecked(waiver.reason) ? "the reason means that a rule was not checked" : "";
}

void readWaivers(const std::string& path, std::list<Waiver>* waivers) {
  static const RE2 skipped(R"(\s*(?:#.*)?)", RE2::Latin1);
  std::string content = apps::readFile(path);
  if (content.compare(0, 3, "\xEF\xBB\xBF") == 0) {
    content.erase(0, 3);
  }
  std::istringstream lines(content);
  int number = 0;
  for (std::string line; std::getline(lines, line);) {
    const std::string source = path + ':' + std::to_string(++number) + ": ";
    if (RE2::FullMatch(line, skipped)) {
      continue;
    }
    const std::string error = parse(line, waivers);
    if (!error.empty()) {
      throw apps::FileError(source + error);
    }
    waivers->back().source = source;
  }
}

}  // namespace

std::vector<std::string> applyWaivers(const std::vector<std::string>& paths,
                                      const std::string& today,
                                      std::vector<CreateViolation>* violations) {
  std::list<Waiver> waivers;
  for (const std::string& path : paths) {
    readWaivers(path, &waivers);
  }
  std::vector<std::string> remarks;
  for (const Waiver& waiver : waivers) {
    if (!waiver.until.empty() && waiver.until < today) {
      remarks.push_back(waiver.source + "the waiver expired on " + waiver.until);
      continue;
    }
    bool isUsed = false;
    for (CreateViolation& violation : *violations) {
      auto& values = *violation.mutable_dynamic_category_values();
      if (values.count("waiver") == 0 && waiver.isFor(violation)) {
        values["waiver"] = waiver.reason;
        isUsed = true;
      }
    }
    if (!isUsed) {
      remarks.push_back(waiver.source + "the waiver matches no finding");
    }
  }
  return remarks;
}

}  // namespace rulecheck
