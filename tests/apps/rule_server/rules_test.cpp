// SPDX-License-Identifier: Apache-2.0

// Rules in files, and which of them a request selects.

#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <string>

#include "common/message_file.h"
#include "rule_server/errors.h"
#include "rule_server/selection.h"
#include "support/messages.h"
#include "test_server.h"

namespace tests {
namespace {

using rule_server::Selection;
using vok::rulecheck::LoadRuleDataFile;
using vok::rulecheck::RuleSpecMap;

TEST(Selections, MatchPatternsWithWholeKeys) {
  const struct {
    std::string pattern;
    std::string key;
    bool matches;
  } cases[] = {
      {"", "", true},
      {"*", "", true},
      {"?", "", false},
      {"", "a", false},
      {"a", "a", true},
      {"a", "ab", false},
      {"ab", "a", false},
      {"?", "ab", false},
      {"??", "ab", true},
      {"a*", "abc", true},
      {"*c", "abc", true},
      {"*d*", "abc", false},
      {"a*X?", "aXbXc", true},
      {"*abc", "abcab", false},
      {"a\\*c", "a*c", false},
      {"a.c", "abc", false},
      {"[a]bc", "abc", false},
      {"ABC", "abc", false},
      {"a??z", "a\n\xffz", true},
      {"*\n\xff*", "a\n\xffz", true},
      {std::string("a\0?", 3), std::string("a\0c", 3), true},
  };
  for (const auto& c : cases) {
    LoadRuleDataFile body;
    body.set_pattern(c.pattern);
    EXPECT_EQ(c.matches, Selection(body).matches(c.key)) << c.pattern << " and " << c.key;
  }
}

TEST(Selections, NeedAllThatIsPresentToMatch) {
  const auto rows = rowsOf(R"(
 | LATCH WIDTH WIDTHCONCAT
pattern: 'WIDTH' | WIDTH
pattern: 'WIDTH*' | WIDTH WIDTHCONCAT
pattern: '' |
regex: '' | LATCH WIDTH WIDTHCONCAT
regex: 'DTH$' | WIDTH
regex: '^[A-Z]{5}$' | LATCH WIDTH
regex: '^(L|W)[A-Z]+H$' | LATCH WIDTH
pattern: '*CH' regex: 'W' |
pattern: 'W*' regex: 'C' | WIDTHCONCAT
)");
  for (const auto& row : rows) {
    Selection selection(parse<LoadRuleDataFile>(row.at(0)));
    std::string keys;
    for (const std::string key : {"LATCH", "WIDTH", "WIDTHCONCAT"}) {
      keys += selection.matches(key) ? (keys.empty() ? "" : " ") + key : "";
    }
    EXPECT_EQ(row.at(1), keys) << row.at(0);
  }
}

// For 100,000 keys it would take hours.
TEST(Selections, EndAfterFiveSeconds) {
  const std::string thousand = "(((.?){10}){10}){10}";
  LoadRuleDataFile body;
  body.set_regex(thousand + thousand + thousand + thousand + "x");
  Selection selection(body);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_THROW(
      for (int i = 0; i < 1000; ++i) { selection.matches(std::string(255, 'a')); },
      rule_server::Failure);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

// For this key the expression would take more than the five seconds.
TEST(Selections, DoNotSeeKeysThatAreTooLong) {
  const std::string thousand = "(((.?){10}){10}){10}";
  TestServer server;
  server.files.contents["r.txt"] =
      "hashmap { key: '" + std::string(40000, 'a') + "' value { key: '' full_name: 'f' } }";
  EXPECT_EQ("0 rules loaded, 1 rule skipped",
            server.outcome("LOAD_RULESPEC_FILE data_file @r.txt regex: '" + thousand + thousand +
                           thousand + thousand + "x'"));
}

const char* const kRules =
    "hashmap { key: 'A' value { key: 'A' full_name: 'first' } }"
    "hashmap { key: 'B' value { key: 'B' full_name: 'second' severity: SEV_ERROR } }"
    "hashmap { key: 'W' value { key: 'W' full_name: 'new widths' } }";

// The rules of the server.
std::map<std::string, std::string> namesOf(TestServer& server) {
  server.prepare("DUMP_RULES data_file @all.txtpb");
  RuleSpecMap rules;
  apps::decodeFrom("all.txtpb", server.files.contents["all.txtpb"], &rules);
  std::map<std::string, std::string> names;
  for (const auto& [key, rule] : rules.hashmap()) {
    names[key] = rule.full_name();
  }
  return names;
}

using Names = std::map<std::string, std::string>;

TEST(Rules, AreLoadedAndWrittenIfSelected) {
  TestServer server;
  server.prepare("W");
  server.files.contents["r.txt"] = kRules;
  EXPECT_EQ("1 rule loaded, 0 rules skipped",
            server.outcome("LOAD_RULESPEC_FILE data_file @r.txt regex: '^B$'"));
  EXPECT_EQ((Names{{"B", "second"}, {"W", "Widths"}}), namesOf(server));
  server.prepare("LOAD_RULESPEC_FILE data_file @r.txt");
  EXPECT_EQ((Names{{"A", "first"}, {"B", "second"}, {"W", "new widths"}}), namesOf(server));
  EXPECT_EQ("2 rules written", server.outcome("DUMP_RULES data_file @o.txt regex: 'A|W'"));
  EXPECT_EQ(std::string::npos, server.files.contents["o.txt"].find("second"));
}

TEST(Rules, ThatAreRefusedAreSkippedOrFailAFileToValidate) {
  TestServer server;
  server.prepare("R");
  server.files.contents["r.txt"] =
      "hashmap { key: 'A' value { key: 'A' full_name: 'sound' } }"
      "hashmap { key: 'B' value { key: 'C' full_name: 'under another key' } }"
      "hashmap { key: 'R' value { key: 'R' full_name: 'fixed already' } }";
  const std::string validate = "LOAD_RULESPEC_FILE data_file @r.txt validate: true ";
  EXPECT_EQ("23", server.outcome(validate));
  EXPECT_EQ("22", server.outcome(validate + "pattern: 'R'"));
  EXPECT_EQ((Names{{"R", "Fixed"}}), namesOf(server));
  EXPECT_EQ("1 rule loaded, 0 rules skipped", server.outcome(validate + "pattern: 'A'"));
  EXPECT_EQ("1 rule loaded, 2 rules skipped",
            server.outcome("LOAD_RULESPEC_FILE data_file @r.txt"));
  EXPECT_EQ((Names{{"A", "sound"}, {"R", "Fixed"}}), namesOf(server));
}

}  // namespace
}  // namespace tests
