// The rules that the client brings along.

#include "lint_client/catalog.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "support/messages.h"

namespace {

using lint_client::catalog;
using vok::rulecheck::RuleSpec;
using vok::rulecheck::Violation;

std::set<std::string> keysOf(const std::string& group) {
  std::set<std::string> keys;
  const auto rules = catalog();
  for (const auto& entry : rules.hashmap()) {
    if (entry.second.categories().at(lint_client::kGroupCategory) == group) {
      keys.insert(entry.first);
    }
  }
  return keys;
}

TEST(Catalog, HasWhatVerilatorCallsLint) {
  EXPECT_EQ((std::set<std::string>{"ALWCOMBORDER", "BSSPACE", "CASEINCOMPLETE", "CASEOVERLAP",
                                   "CASEWITHX", "CASEX", "CASTCONST", "CMPCONST", "COLONPLUS",
                                   "IMPLICIT", "IMPLICITSTATIC", "LATCH", "LITENDIAN", "PINMISSING",
                                   "REALCVT", "UNSIGNED", "WIDTH"}),
            keysOf("lint"));
}

TEST(Catalog, HasWhatVerilatorCallsStyle) {
  EXPECT_EQ((std::set<std::string>{"ASSIGNDLY", "BLKSEQ", "DECLFILENAME", "DEFPARAM", "EOFNEWLINE",
                                   "IMPORTSTAR", "INCABSPATH", "PINCONNECTEMPTY", "PINNOCONNECT",
                                   "SYNCASYNCNET", "UNDRIVEN", "UNUSEDGENVAR", "UNUSEDPARAM",
                                   "UNUSEDSIGNAL", "VARHIDDEN"}),
            keysOf("style"));
}

TEST(Catalog, HasNoOtherGroups) {
  EXPECT_EQ(catalog().hashmap().size(), keysOf("lint").size() + keysOf("style").size() +
                                              keysOf("default").size() + keysOf("error").size());
  EXPECT_EQ(1u, keysOf("error").count("ERROR"));
  EXPECT_EQ(1u, keysOf("default").count("MULTIDRIVEN"));
}

TEST(Catalog, HasCompleteRules) {
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

TEST(Catalog, UsesTheWholeScale) {
  std::set<int> severities;
  const auto rules = catalog();
  for (const auto& entry : rules.hashmap()) {
    severities.insert(entry.second.severity());
  }
  EXPECT_EQ(
      (std::set<int>{Violation::SEV_FATAL, Violation::SEV_ERROR, Violation::SEV_CRITICAL_WARNING,
                     Violation::SEV_WARNING, Violation::SEV_ADVISORY}),
      severities);
}

TEST(Catalog, GetsRulesForWhatItDoesNotKnow) {
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

TEST(Catalog, HasOneRuleForErrorsWithoutANameOfTheirOwn) {
  lint_client::Message message;
  message.isError = true;
  EXPECT_EQ("ERROR", lint_client::ruleKeyOf(message));
  message.code = "PORTSHORT";
  EXPECT_EQ("PORTSHORT", lint_client::ruleKeyOf(message));
}

}  // namespace
