// SPDX-License-Identifier: Apache-2.0

// What a finding is made of.

#include <gtest/gtest.h>

#include <string>

#include "support/messages.h"
#include "test_server.h"

namespace tests {
namespace {

using vok::rulecheck::Affirmation;
using vok::rulecheck::Response;
using vok::rulecheck::Violation;

struct FindingCase {
  const char* name;
  const char* rule;
  const char* request;
  const char* finding;
};

const FindingCase violationCases[] = {
    {"a rule without a severity leaves it unknown", "", "", "severity: SEV_UNKNOWN"},
    {"the rule's severity counts", "severity: SEV_FATAL", "", "severity: SEV_FATAL"},
    {"the request's severity counts more", "severity: SEV_FATAL", "severity: SEV_ADVISORY",
     "severity: SEV_ADVISORY"},
    {"the text is the rule's message", "raw_msg: 'm %1' affirm_msg: 'a'", "",
     "severity: SEV_UNKNOWN details { text: 'm %1' }"},
    {"an empty message is a message", "raw_msg: ''", "",
     "severity: SEV_UNKNOWN details { text: '' }"},
    {"details have the arguments", "raw_msg: '%1'",
     "args { arg { string_val: 'x' } arg { ref { type: PORT name: 'p' } } }",
     "severity: SEV_UNKNOWN details { text: '%1'"
     "  args { arg { string_val: 'x' } arg { ref { type: PORT name: 'p' } } } }"},
    {"a resolution that names no argument has none", "resolution_msg: '100%% sure'",
     "args { arg { string_val: 'x' } }",
     "severity: SEV_UNKNOWN details { text: 'f' args { arg { string_val: 'x' } } }"
     " resolution { text: '100%% sure' }"},
    {"a percent sign before a letter names no argument", "resolution_msg: '5% of %%1'",
     "args { arg { string_val: 'x' } }",
     "severity: SEV_UNKNOWN details { text: 'f' args { arg { string_val: 'x' } } }"
     " resolution { text: '5% of %%1' }"},
    {"a resolution that names an argument has all", "resolution_msg: 'cut %%%1'",
     "args { arg { string_val: 'x' } }",
     "severity: SEV_UNKNOWN details { text: 'f' args { arg { string_val: 'x' } } }"
     " resolution { text: 'cut %%%1' args { arg { string_val: 'x' } } }"},
    {"values of the request are kept", "threshold_value { int_val: 1 }",
     "actual_value { int_val: 9 units: 'bits' } threshold_value { int_val: 8 units: 'bits' }",
     "severity: SEV_UNKNOWN actual_value { int_val: 9 units: 'bits' }"
     " threshold_value { int_val: 8 units: 'bits' }"},
    {"the rule's threshold stands in", "threshold_value { int_val: 1 }", "",
     "severity: SEV_UNKNOWN threshold_value { int_val: 1 }"},
    {"expectation, examples and categories are the rule's",
     "expects: 'e' examples { uri { link_text: 'l' } } categories { key: 2 value: 'c' }", "",
     "severity: SEV_UNKNOWN expects: 'e' examples { uri { link_text: 'l' } }"
     " categories { key: 2 value: 'c' }"},
    {"a dynamic category replaces the rule's value",
     "categories { key: 2 value: 'c' } dynamic_categories { key: 2 value: true }",
     "dynamic_category_values { key: '2' value: 'd' }",
     "severity: SEV_UNKNOWN categories { key: 2 value: 'd' }"},
    {"a dynamic category may have a negative number", "dynamic_categories { key: -7 value: true }",
     "dynamic_category_values { key: '-7' value: 'd' }",
     "severity: SEV_UNKNOWN categories { key: -7 value: 'd' }"},
    {"a waiver's reason is in category 1", "categories { key: 2 value: 'c' }",
     "dynamic_category_values { key: 'waiver' value: 'on purpose' }",
     "severity: SEV_UNKNOWN categories { key: 1 value: 'on purpose' }"
     " categories { key: 2 value: 'c' }"},
};

const FindingCase affirmationCases[] = {
    {"the text is the rule's affirmation", "raw_msg: 'm' affirm_msg: 'a'", "",
     "details { text: 'a' }"},
    {"the rule's name stands in", "raw_msg: 'm' resolution_msg: 'r'", "", "details { text: 'f' }"},
    {"details have the arguments", "affirm_msg: '%1'", "args { arg { string_val: 'x' } }",
     "details { text: '%1' args { arg { string_val: 'x' } } }"},
    {"values are kept", "", "actual_value { int_val: 7 } threshold_value { int_val: 8 }",
     "actual_value { int_val: 7 } threshold_value { int_val: 8 }"},
    {"expectation, threshold and categories are the rule's",
     "expects: 'e' threshold_value { int_val: 8 } categories { key: 2 value: 'c' }", "",
     "expects: 'e' threshold_value { int_val: 8 } categories { key: 2 value: 'c' }"},
    {"a dynamic category is kept", "dynamic_categories { key: 3 value: true }",
     "dynamic_category_values { key: '3' value: 'd' }", "categories { key: 3 value: 'd' }"},
};

void upsert(TestServer& server, const std::string& fields) {
  server.prepare({kStart,
                  "type: UPSERT_RULESPEC upsert_rulespec {"
                  "  rule_spec { key: 'k' full_name: 'f' " +
                      fields + " } }"});
}

std::string create(const std::string& type, const std::string& body, const std::string& fields) {
  return "type: " + type + ' ' + body + " { rule_key: 'k' session_uuid: 's' " + fields + " }";
}

// What is the same in all cases is left out of the tables.
template <typename Finding>
Finding expected(const std::string& fields) {
  auto finding = parse<Finding>("id: 1 rule_key: 'k' details { text: 'f' }");
  finding.MergeFrom(parse<Finding>(fields));
  return finding;
}

TEST(Findings, AreViolationsMadeOfRuleAndRequest) {
  for (const FindingCase& c : violationCases) {
    SCOPED_TRACE(c.name);
    TestServer server;
    upsert(server, c.rule);
    const Response response = server.ask(create("CREATE_VIOLATION", "create_violation", c.request));
    EXPECT_EQ(textOf(expected<Violation>(c.finding)), textOf(response.violation()))
        << textOf(response);
  }
}

TEST(Findings, AreAffirmationsMadeOfRuleAndRequest) {
  for (const FindingCase& c : affirmationCases) {
    SCOPED_TRACE(c.name);
    TestServer server;
    upsert(server, c.rule);
    const Response response =
        server.ask(create("CREATE_AFFIRMATION", "create_affirmation", c.request));
    EXPECT_EQ(textOf(expected<Affirmation>(c.finding)), textOf(response.affirmation()))
        << textOf(response);
  }
}

const char* const kThreeRules[] = {
    "type: UPSERT_RULESPEC upsert_rulespec { rule_spec { key: 'broken' full_name: 'f' } }",
    "type: UPSERT_RULESPEC upsert_rulespec { rule_spec { key: 'waived' full_name: 'f' } }",
    "type: UPSERT_RULESPEC upsert_rulespec { rule_spec { key: 'met' full_name: 'f' } }",
};

TEST(Findings, AreCountedNumberedAndSorted) {
  TestServer server;
  server.prepare({kStart, kThreeRules[0], kThreeRules[1], kThreeRules[2],
                  "type: CREATE_VIOLATION create_violation {"
                  "  rule_key: 'broken' session_uuid: 's' }",
                  "type: CREATE_AFFIRMATION create_affirmation {"
                  "  rule_key: 'met' session_uuid: 's' }",
                  "type: CREATE_VIOLATION create_violation { rule_key: 'waived' session_uuid: 's'"
                  "  dynamic_category_values { key: 'waiver' value: 'r' } }",
                  "type: CREATE_VIOLATION create_violation {"
                  "  rule_key: 'broken' session_uuid: 's' }"});
  const auto result = server.result();
  EXPECT_EQ(2, result.violation_count());
  EXPECT_EQ(1, result.waived_count());
  EXPECT_EQ(1, result.affirmation_count());
  EXPECT_EQ(1u, result.violations().hashmap().count(1));
  EXPECT_EQ(1u, result.affirmations().hashmap().count(2));
  EXPECT_EQ(1u, result.waived_violations().hashmap().count(3));
  EXPECT_EQ(1u, result.violations().hashmap().count(4));
  EXPECT_EQ(2u, result.specs_violated().hashmap().size());
  EXPECT_EQ(1u, result.specs_violated().hashmap().count("broken"));
  EXPECT_EQ(1u, result.specs_violated().hashmap().count("waived"));
  EXPECT_EQ(1u, result.specs_affirmed().hashmap().size());
  EXPECT_EQ(1u, result.specs_affirmed().hashmap().count("met"));
}

TEST(Findings, OfSessionsAreKeptApart) {
  TestServer server;
  server.prepare({kStart, kRule, "type: START_SESSION start_session { name: 't' uuid: 't' }",
                  "type: CREATE_VIOLATION create_violation { rule_key: 'W' session_uuid: 't' }"});
  EXPECT_EQ(0, server.result().violation_count());
}

TEST(Findings, KeepTheirTextWhenTheRuleIsReplaced) {
  TestServer server;
  server.prepare({kStart, kRule,
                  "type: CREATE_VIOLATION create_violation { rule_key: 'W' session_uuid: 's' }",
                  "type: UPSERT_RULESPEC upsert_rulespec {"
                  "  rule_spec { key: 'W' full_name: 'New' disposition: DEPRECATED } }"});
  const auto result = server.result();
  EXPECT_EQ("Widths", result.violations().hashmap().at(1).details().text());
  EXPECT_EQ("New", result.specs_violated().hashmap().at("W").full_name());
}

TEST(Findings, OfRulesInForceAreTaken) {
  for (const std::string disposition :
       {"ENABLED", "NEW", "DEPRECATED", "USERDEFINED", "READONLY", "NODISABLE"}) {
    TestServer server;
    upsert(server, "disposition: " + disposition);
    EXPECT_EQ(Response::VIOLATION,
              server.ask(create("CREATE_VIOLATION", "create_violation", "")).type())
        << disposition;
  }
}

}  // namespace
}  // namespace tests
