// SPDX-License-Identifier: Apache-2.0

// How a rule and a request make a finding.

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>

#include "support/messages.h"
#include "test_server.h"

namespace tests {
namespace {

using vok::rulecheck::Affirmation;
using vok::rulecheck::Response;
using vok::rulecheck::Violation;

// Fields of the rule "k" with the full name "f", of the request and of the finding. A finding
// has the id 1, the rule_key "k" and, unless the row has other details, the text "f".
const std::string kViolations = R"(
 |  | severity: SEV_UNKNOWN
severity: SEV_FATAL |  | severity: SEV_FATAL
severity: SEV_FATAL | severity: SEV_ADVISORY | severity: SEV_ADVISORY
raw_msg: 'm %1' affirm_msg: 'a' |  | severity: SEV_UNKNOWN details { text: 'm %1' }
raw_msg: '' |  | severity: SEV_UNKNOWN details { text: '' }
raw_msg: '%1' | args { arg { string_val: 'x' } arg { ref { type: PORT name: 'p' } } } | severity: SEV_UNKNOWN details { text: '%1' args { arg { string_val: 'x' } arg { ref { type: PORT name: 'p' } } } }
resolution_msg: '100%% sure' | args { arg { string_val: 'x' } } | severity: SEV_UNKNOWN details { text: 'f' args { arg { string_val: 'x' } } } resolution { text: '100%% sure' }
resolution_msg: '5% of %%1' | args { arg { string_val: 'x' } } | severity: SEV_UNKNOWN details { text: 'f' args { arg { string_val: 'x' } } } resolution { text: '5% of %%1' }
resolution_msg: 'cut %%%1' | args { arg { string_val: 'x' } } | severity: SEV_UNKNOWN details { text: 'f' args { arg { string_val: 'x' } } } resolution { text: 'cut %%%1' args { arg { string_val: 'x' } } }
threshold_value { int_val: 1 } | actual_value { int_val: 9 units: 'bits' } threshold_value { int_val: 8 units: 'bits' } | severity: SEV_UNKNOWN actual_value { int_val: 9 units: 'bits' } threshold_value { int_val: 8 units: 'bits' }
threshold_value { int_val: 1 } |  | severity: SEV_UNKNOWN threshold_value { int_val: 1 }
expects: 'e' examples { uri { link_text: 'l' } } categories { key: 2 value: 'c' } |  | severity: SEV_UNKNOWN expects: 'e' examples { uri { link_text: 'l' } } categories { key: 2 value: 'c' }
categories { key: 2 value: 'c' } dynamic_categories { key: 2 value: true } | dynamic_category_values { key: '2' value: 'd' } | severity: SEV_UNKNOWN categories { key: 2 value: 'd' }
dynamic_categories { key: -7 value: true } | dynamic_category_values { key: '-7' value: 'd' } | severity: SEV_UNKNOWN categories { key: -7 value: 'd' }
categories { key: 2 value: 'c' } | dynamic_category_values { key: 'waiver' value: 'on purpose' } | severity: SEV_UNKNOWN categories { key: 1 value: 'on purpose' } categories { key: 2 value: 'c' }
disposition: NEW |  | severity: SEV_UNKNOWN
disposition: DEPRECATED |  | severity: SEV_UNKNOWN
disposition: USERDEFINED |  | severity: SEV_UNKNOWN
disposition: READONLY |  | severity: SEV_UNKNOWN
disposition: NODISABLE |  | severity: SEV_UNKNOWN
)";

const std::string kAffirmations = R"(
raw_msg: 'm' affirm_msg: 'a' |  | details { text: 'a' }
raw_msg: 'm' resolution_msg: 'r' |  | details { text: 'f' }
affirm_msg: '%1' | args { arg { string_val: 'x' } } | details { text: '%1' args { arg { string_val: 'x' } } }
 | actual_value { int_val: 7 } threshold_value { int_val: 8 } | actual_value { int_val: 7 } threshold_value { int_val: 8 }
expects: 'e' threshold_value { int_val: 8 } categories { key: 2 value: 'c' } |  | expects: 'e' threshold_value { int_val: 8 } categories { key: 2 value: 'c' }
dynamic_categories { key: 3 value: true } | dynamic_category_values { key: '3' value: 'd' } | categories { key: 3 value: 'd' }
)";

template <typename Finding>
void expectFindings(const std::string& table, const std::string& type,
                    const Finding& (Response::*finding)() const) {
  for (const auto& row : rowsOf(table)) {
    SCOPED_TRACE(row.at(0) + " | " + row.at(1));
    TestServer server;
    server.prepare("start; UPSERT_RULESPEC rule_spec { key: 'k' full_name: 'f' " + row.at(0) +
                   " }");
    const Response response = server.ask(type + " rule_key: 'k' session_uuid: 's' " + row.at(1));
    auto expected = parse<Finding>("id: 1 rule_key: 'k' details { text: 'f' }");
    expected.MergeFrom(parse<Finding>(row.at(2)));
    EXPECT_EQ(textOf(expected), textOf((response.*finding)())) << textOf(response);
  }
}

TEST(Findings, AreMadeOfRuleAndRequest) {
  expectFindings(kViolations, "CREATE_VIOLATION", &Response::violation);
  expectFindings(kAffirmations, "CREATE_AFFIRMATION", &Response::affirmation);
}

TEST(Findings, AreCountedNumberedAndSorted) {
  TestServer server;
  server.prepare(
      "start; W; UPSERT_RULESPEC rule_spec { key: 'waived' full_name: 'f' }; "
      "UPSERT_RULESPEC rule_spec { key: 'met' full_name: 'f' }; violation; "
      "CREATE_AFFIRMATION rule_key: 'met' session_uuid: 's'; "
      "CREATE_VIOLATION rule_key: 'waived' session_uuid: 's'"
      " dynamic_category_values { key: 'waiver' value: 'r' }; violation; "
      "START_SESSION name: 't' uuid: 't'; CREATE_VIOLATION rule_key: 'W' session_uuid: 't'");
  const auto result = server.result();
  const auto keys = [](const auto& map) {
    std::ostringstream all;
    for (const auto& entry : std::map(map.hashmap().begin(), map.hashmap().end())) {
      all << entry.first << ' ';
    }
    return all.str();
  };
  EXPECT_EQ("1 4 ", keys(result.violations()));
  EXPECT_EQ("2 ", keys(result.affirmations()));
  EXPECT_EQ("3 ", keys(result.waived_violations()));
  EXPECT_EQ("W waived ", keys(result.specs_violated()));
  EXPECT_EQ("met ", keys(result.specs_affirmed()));
}

TEST(Findings, KeepTheirTextWhenTheRuleIsReplaced) {
  TestServer server;
  server.prepare("start; W; violation; UPSERT_RULESPEC rule_spec { key: 'W' full_name: 'New' }");
  const auto result = server.result();
  EXPECT_EQ("Widths", result.violations().hashmap().at(1).details().text());
  EXPECT_EQ("New", result.specs_violated().hashmap().at("W").full_name());
}

}  // namespace
}  // namespace tests
