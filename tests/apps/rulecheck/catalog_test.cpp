// SPDX-License-Identifier: Apache-2.0

// The rules of Verilator.

#include "rulecheck/lint/catalog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "support/messages.h"

namespace {

using vok::rulecheck::RuleSpec;
using vok::rulecheck::Violation;

TEST(Catalog, RulesAreComplete) {
  const auto rules = rulecheck::verilatorRules();
  for (const auto& entry : rules) {
    const RuleSpec& rule = entry.second;
    SCOPED_TRACE(entry.first);
    EXPECT_EQ(entry.first, rule.key());
    EXPECT_FALSE(rule.full_name().empty());
    EXPECT_EQ("Verilator", rule.owner());
    EXPECT_EQ("%1: %2", rule.raw_msg());
    EXPECT_FALSE(rule.resolution_msg().empty());
    EXPECT_FALSE(rule.expects().empty());
    EXPECT_EQ(rule.expects(), rule.affirm_msg());
    EXPECT_TRUE(rule.has_severity());
    EXPECT_NE(Violation::SEV_UNKNOWN, rule.severity());
    EXPECT_EQ("verilator.org", rule.description().host());
    EXPECT_EQ(entry.first == "ERROR" ? "/guide/latest/warnings.html" : "/warn/" + entry.first,
              rule.description().path());
  }
}

TEST(Catalog, GetsARuleForAnUnknownKey) {
  for (const bool isError : {false, true}) {
    vok::rulecheck::CreateViolation violation;
    violation.set_rule_key("BRANDNEW");
    if (isError) {
      violation.set_severity(Violation::SEV_ERROR);
    }
    auto rules = rulecheck::verilatorRules();
    rulecheck::addMissingRules({violation}, &rules);
    const RuleSpec& rule = rules.at("BRANDNEW");
    EXPECT_EQ("BRANDNEW", rule.key());
    EXPECT_EQ(isError ? Violation::SEV_ERROR : Violation::SEV_WARNING, rule.severity());
    EXPECT_EQ("/warn/BRANDNEW", rule.description().path());
    EXPECT_TRUE(rule.IsInitialized());
  }
}

TEST(Catalog, KnowsGroupsAndFamilies) {
  const auto rules = rulecheck::verilatorRules();
  const auto named = [&rules](const char* name) { return rulecheck::rulesNamed(name, rules); };
  using testing::Contains;
  using testing::Not;
  EXPECT_THAT(named("LATCH"), testing::ElementsAre("LATCH"));
  EXPECT_THAT(named("UNUSED"), testing::ElementsAre("UNUSEDGENVAR", "UNUSEDPARAM", "UNUSEDSIGNAL"));
  EXPECT_THAT(named("CASE"), testing::IsEmpty());
  EXPECT_THAT(named("style"), testing::AllOf(Contains("BLKSEQ"), Not(Contains("LATCH"))));
  EXPECT_THAT(named("lint"), testing::AllOf(Contains("BLKSEQ"), Contains("LATCH")));
  EXPECT_EQ(rules.size(), named("").size());
}

}  // namespace
