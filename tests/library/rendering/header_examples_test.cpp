// SPDX-License-Identifier: Apache-2.0

// The examples in the comments of Converter.h.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <map>
#include <regex>
#include <string>
#include <vector>

#include "rendering/counted_converter.h"
#include "support/messages.h"

namespace {

using tests::parse;
using Converter = tests::CountedConverter;
using namespace vok::rulecheck;

std::vector<std::string> linesOf(const std::string& path) {
  std::ifstream in(path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) {
    lines.push_back(line);
  }
  return lines;
}

// Functions by name and message type, called with a message in text format.
std::string call(const std::string& function, const std::string& message) {
  static const std::map<std::string, std::function<std::string(const std::string&)>> functions = {
      {"toString(Scalar)", [](const auto& m) { return Converter::toString(parse<Scalar>(m)); }},
      {"toString(Reference)",
       [](const auto& m) { return Converter::toString(parse<Reference>(m)); }},
      {"href(Resource)", [](const auto& m) { return Converter::href(parse<Resource>(m)); }},
      {"toHtml(Resource)",
       [](const auto& m) { return Converter::toHtml(parse<Resource>(m), "A"); }},
      {"toHtml(Link)", [](const auto& m) { return Converter::toHtml(parse<Link>(m)); }},
      {"toHtml(Reference)", [](const auto& m) { return Converter::toHtml(parse<Reference>(m)); }},
      {"toHtml(Arg)", [](const auto& m) { return Converter::toHtml(parse<Arg>(m)); }},
  };
  return functions.at(function)(message);
}

// An example of the header: a message in braces, or a call, and its result.
struct Example {
  std::string input;
  std::string result;
};

int depthOf(const std::string& text) {
  return static_cast<int>(std::count(text.begin(), text.end(), '{') -
                          std::count(text.begin(), text.end(), '}'));
}

// The examples are the comment lines indented by three spaces; one ends with the
// line on which its braces are balanced and a result is in double quotes.
std::vector<Example> examplesIn(const std::vector<std::string>& comment) {
  const std::regex last(R"re((.*[})])(?:, "A")? {2,}"(.*)"(?:  \(.*\))?)re");
  const std::regex onlyResult(R"re((.*[})])(?:, "A")? +"(.*)"(?:  \(.*\))?)re");
  std::vector<Example> examples;
  std::string pending;
  for (const std::string& line : comment) {
    if (line.rfind("  //   ", 0) != 0) {
      pending.clear();
      continue;
    }
    pending += (pending.empty() ? "" : " ") + line.substr(7);
    std::smatch parts;
    if (depthOf(pending.substr(0, pending.find("  \""))) == 0 &&
        (std::regex_match(pending, parts, last) || std::regex_match(pending, parts, onlyResult))) {
      examples.push_back({parts[1], parts[2]});
      pending.clear();
    }
  }
  return examples;
}

// With 3.3 enumerations have no fixed type, and -Wconversion warns of a constant.
template <typename Enum>
Enum unlisted(int number) {
  return static_cast<Enum>(number);
}

std::string evaluate(const std::string& function, const std::string& input) {
  static const std::map<std::string, std::string> words = {
      {"toString(Resource::HTTPS)", Converter::toString(Resource::HTTPS)},
      {"toString(static_cast<Resource_Scheme>(-1))",
       Converter::toString(unlisted<Resource_Scheme>(-1))},
      {"toString(Reference::DATAMOVER)", Converter::toString(Reference::DATAMOVER)},
      {"toString(Reference::READ_OP)", Converter::toString(Reference::READ_OP)},
      {"toString(static_cast<Reference_RefType>(29))",
       Converter::toString(static_cast<Reference_RefType>(29))},
      {"toString(Violation::SEV_CRITICAL_WARNING)",
       Converter::toString(Violation::SEV_CRITICAL_WARNING)},
      {"toString(Violation::SEV_UNKNOWN)", Converter::toString(Violation::SEV_UNKNOWN)},
  };
  return input.front() == '{' ? call(function, input.substr(1, input.size() - 2)) : words.at(input);
}

TEST(Header, ItsExamplesAreTrue) {
  const std::regex declaration(R"(  static std::string (\w+)\((?:const )?(\w+).*)");
  std::vector<std::string> comment;
  bool hasExamples = false;
  for (const std::string& line : linesOf(HEADER)) {
    std::smatch parts;
    if (!std::regex_match(line, parts, declaration)) {
      comment.push_back(line);
      continue;
    }
    const std::string function = parts[1].str() + "(" + parts[2].str() + ")";
    const auto found = examplesIn(comment);
    EXPECT_GE(found.size(), 2u) << function;
    for (const Example& example : found) {
      hasExamples = true;
      EXPECT_EQ(evaluate(function, example.input), example.result) << function << example.input;
    }
    comment.clear();
  }
  EXPECT_TRUE(hasExamples);
}

}  // namespace
