// SPDX-License-Identifier: Apache-2.0

// The rules that the client brings along.

#include "lint_client/catalog.h"

#include <gtest/gtest.h>

#include <string>

#include "support/messages.h"

namespace {

using lint_client::catalog;
using vok::rulecheck::RuleSpec;
using vok::rulecheck::Violation;

TEST(Catalog, RulesAreComplete) {
  const auto rules = catalog();
  for (const auto& entry : rules.hashmap()) {
    const RuleSpec& rule = entry.second;
    SCOPED_TRACE(entry.first);
    EXPECT_EQ(entry.first, rule.key());
    EXPECT_FALSE(rule.full_name().empty());
    EXPECT_EQ("Verilator", rule.owner());
    EXPECT_EQ(rule.full_name() + " at %1: %2", rule.raw_msg());
    EXPECT_EQ(std::string::npos, rule.full_name().find('%'));
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

TEST(Catalog, MakesARuleForAnUnknownCode) {
  lint_client::Message message;
  message.code = "BRANDNEW";
  const RuleSpec rule = lint_client::genericRule(message);
  EXPECT_EQ("BRANDNEW", rule.key());
  EXPECT_EQ(Violation::SEV_WARNING, rule.severity());
  EXPECT_EQ("/warn/BRANDNEW", rule.description().path());
  EXPECT_EQ("other", rule.categories().at(lint_client::kGroupCategory));
  EXPECT_TRUE(rule.IsInitialized());
  message.isError = true;
  EXPECT_EQ(Violation::SEV_ERROR, lint_client::genericRule(message).severity());
}

}  // namespace
