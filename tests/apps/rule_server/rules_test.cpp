// SPDX-License-Identifier: Apache-2.0

// Rules in files, and which of them a request selects.

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "common/message_file.h"
#include "rule_server/errors.h"
#include "rule_server/selection.h"
#include "support/messages.h"
#include "test_server.h"

namespace tests {
namespace {

using vok::rulecheck::LoadRuleDataFile;
using vok::rulecheck::RuleSpecMap;

struct PatternCase {
  std::string text;
  std::string pattern;
  bool matches;
};

TEST(Patterns, MatchWholeKeys) {
  const PatternCase cases[] = {
      {"", "", true},
      {"", "*", true},
      {"", "**", true},
      {"", "?", false},
      {"a", "", false},
      {"a", "a", true},
      {"a", "b", false},
      {"ab", "a", false},
      {"a", "ab", false},
      {"a", "?", true},
      {"ab", "?", false},
      {"ab", "??", true},
      {"abc", "a*", true},
      {"abc", "*c", true},
      {"abc", "*b*", true},
      {"abc", "*d*", false},
      {"abc", "a*c", true},
      {"abc", "a*b", false},
      {"aXbXc", "a*X?", true},
      {"abcabc", "*abc", true},
      {"abcab", "*abc", false},
      {"a*c", "a\\*c", false},
      {"a.c", "a.c", true},
      {"abc", "a.c", false},
      {"abc", "[a]bc", false},
      {"abc", "ABC", false},
      {std::string("a\0c", 3), "a?c", true},
      {"a\n\xffz", "a??z", true},
      {"a\n\xffz", "*\n\xff*", true},
      {std::string("a\0c", 3), std::string("a\0?", 3), true},
      {"mississippi", "m*iss*p*", true},
      {std::string(5000, 'a'), "*a*a*a*a*a*a*b", false},
  };
  for (const PatternCase& c : cases) {
    LoadRuleDataFile body;
    body.set_pattern(c.pattern);
    EXPECT_EQ(c.matches, rule_server::Selection(body).matches(c.text))
        << c.text.substr(0, 20) << " against " << c.pattern;
  }
}

struct SelectionCase {
  const char* body;
  std::string keys;
};

// Of the keys LATCH, WIDTH and WIDTHCONCAT.
const SelectionCase selectionCases[] = {
    {"", "LATCH WIDTH WIDTHCONCAT"},
    {"pattern: 'WIDTH'", "WIDTH"},
    {"pattern: 'WIDTH*'", "WIDTH WIDTHCONCAT"},
    {"pattern: ''", ""},
    {"regex: ''", "LATCH WIDTH WIDTHCONCAT"},
    {"regex: 'DTH$'", "WIDTH"},
    {"regex: 'A'", "LATCH WIDTHCONCAT"},
    {"regex: '^[A-Z]{5}$'", "LATCH WIDTH"},
    {"regex: '^(L|W)[A-Z]+H$'", "LATCH WIDTH"},
    {"pattern: '*CH' regex: 'W'", ""},
    {"pattern: 'W*' regex: 'C'", "WIDTHCONCAT"},
};

TEST(Selections, TakeWhatAllGivenMeansMatch) {
  for (const SelectionCase& c : selectionCases) {
    rule_server::Selection selection(parse<LoadRuleDataFile>(c.body));
    std::string keys;
    for (const char* const key : {"LATCH", "WIDTH", "WIDTHCONCAT"}) {
      keys += selection.matches(key) ? (keys.empty() ? "" : " ") + std::string(key) : "";
    }
    EXPECT_EQ(c.keys, keys) << c.body;
  }
}

// With a matcher that backtracks, each of these would run for ages.
TEST(Selections, TakeLittleTimeForAnyExpression) {
  for (const char* const regex : {"(a|a)*b", "(a*)*b", "(a+)+b", "a*a*a*a*a*a*a*a*a*a*a*a*b",
                                  "(a|aa)+$b", "((((a?)+)+)+)+b", "(.*)(.*)(.*)(.*)(.*)[^a]"}) {
    LoadRuleDataFile body;
    body.set_regex(regex);
    EXPECT_FALSE(rule_server::Selection(body).matches(std::string(255, 'a'))) << regex;
  }
}

// Time that is quadratic in the length of the key would be a minute and more.
TEST(Selections, TakeLittleTimeForLongKeys) {
  LoadRuleDataFile body;
  body.set_pattern("*" + std::string(500, 'a') + "b*" + std::string(400, 'a') + "?b");
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(rule_server::Selection(body).matches(std::string(3000000, 'a')));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

// For 100,000 keys it would take hours.
TEST(Selections, EndAfterFiveSeconds) {
  const std::string thousand = "(((.?){10}){10}){10}";
  LoadRuleDataFile body;
  body.set_regex(thousand + thousand + thousand + thousand + "x");
  rule_server::Selection selection(body);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_THROW(
      for (int i = 0; i < 1000; ++i) { selection.matches(std::string(255, 'a')); },
      rule_server::Failure);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

const char* const kRules =
    "hashmap { key: 'A' value { key: 'A' full_name: 'first' } }"
    "hashmap { key: 'B' value { key: 'B' full_name: 'second' severity: SEV_ERROR } }"
    "hashmap { key: 'W' value { key: 'W' full_name: 'new widths' } }";

std::string ask(TestServer& server, const std::string& type, const std::string& body,
                const std::string& fields) {
  const auto response = server.ask("type: " + type + ' ' + body + " { " + fields + " }");
  return response.has_status() ? response.status().msg() : std::to_string(response.error().code());
}

std::string load(TestServer& server, const std::string& fields) {
  return ask(server, "LOAD_RULESPEC_FILE", "load_rulespec_file", fields);
}

// The rules of the server, as text.
std::string rulesOf(TestServer& server) {
  ask(server, "DUMP_RULES", "dump_rules", "data_file { scheme: FILE path: 'all.txtpb' }");
  return server.files.contents["all.txtpb"];
}

std::string keysOf(TestServer& server) {
  RuleSpecMap rules;
  apps::decodeFrom("all.txtpb", rulesOf(server), &rules);
  std::string keys;
  for (const char* const key : {"A", "B", "R", "W"}) {
    keys += rules.hashmap().count(key) != 0 ? key : "";
  }
  EXPECT_EQ(keys.size(), rules.hashmap().size());
  return keys;
}

TEST(Rules, TravelThroughFilesOfEachFormat) {
  for (const std::string path : {"r.pb", "r.bin", "r.txtpb", "r.textproto", "r.txt", "r.json"}) {
    SCOPED_TRACE(path);
    const std::string file = "data_file { scheme: FILE path: '" + path + "' }";
    TestServer first;
    first.files.contents["in.txt"] = kRules;
    EXPECT_EQ("3 rules loaded, 0 rules skipped",
              load(first, "data_file { scheme: FILE path: 'in.txt' }"));
    EXPECT_EQ("3 rules written", ask(first, "DUMP_RULES", "dump_rules", file));
    TestServer second;
    second.files.contents[path] = first.files.contents[path];
    EXPECT_EQ("3 rules loaded, 0 rules skipped", load(second, file + " validate: true"));
    EXPECT_EQ(rulesOf(first), rulesOf(second));
  }
}

TEST(Rules, AreLoadedIfSelected) {
  TestServer server;
  server.files.contents["r.txt"] = kRules;
  EXPECT_EQ("1 rule loaded, 0 rules skipped",
            load(server, "data_file { scheme: FILE path: 'r.txt' } regex: '^B$'"));
  EXPECT_EQ("B", keysOf(server));
}

TEST(Rules, AreWrittenIfSelected) {
  TestServer server;
  server.files.contents["r.txt"] = kRules;
  load(server, "data_file { scheme: FILE path: 'r.txt' }");
  EXPECT_EQ("2 rules written", ask(server, "DUMP_RULES", "dump_rules",
                                   "data_file { scheme: FILE path: 'o.txt' } regex: 'A|W'"));
  RuleSpecMap rules;
  apps::decodeFrom("o.txt", server.files.contents["o.txt"], &rules);
  EXPECT_EQ(2u, rules.hashmap().size());
  EXPECT_EQ(0u, rules.hashmap().count("B"));
}

TEST(Rules, ReplaceThoseWithTheirKeys) {
  TestServer server;
  server.prepare({kRule});
  server.files.contents["r.txt"] = kRules;
  load(server, "data_file { scheme: FILE path: 'r.txt' }");
  EXPECT_NE(std::string::npos, rulesOf(server).find("new widths"));
  EXPECT_EQ(std::string::npos, rulesOf(server).find("\"Widths\""));
}

const char* const kMixedRules =
    "hashmap { key: 'A' value { key: 'A' full_name: 'sound' } }"
    "hashmap { key: 'B' value { key: 'C' full_name: 'under another key' } }"
    "hashmap { key: 'R' value { key: 'R' full_name: 'fixed already' } }";

TEST(Rules, ThatAreRefusedAreSkipped) {
  TestServer server;
  server.prepare({kReadOnlyRule});
  server.files.contents["r.txt"] = kMixedRules;
  EXPECT_EQ("1 rule loaded, 2 rules skipped",
            load(server, "data_file { scheme: FILE path: 'r.txt' }"));
  EXPECT_EQ("AR", keysOf(server));
  EXPECT_EQ(std::string::npos, rulesOf(server).find("fixed already"));
}

TEST(Rules, ThatAreRefusedFailAFileToValidate) {
  TestServer server;
  server.prepare({kReadOnlyRule});
  server.files.contents["r.txt"] = kMixedRules;
  EXPECT_EQ("23", load(server, "data_file { scheme: FILE path: 'r.txt' } validate: true"));
  EXPECT_EQ("R", keysOf(server));
  EXPECT_EQ("22",
            load(server, "data_file { scheme: FILE path: 'r.txt' } validate: true pattern: 'R'"));
  EXPECT_EQ("1 rule loaded, 0 rules skipped",
            load(server, "data_file { scheme: FILE path: 'r.txt' } validate: true pattern: 'A'"));
}

}  // namespace
}  // namespace tests
