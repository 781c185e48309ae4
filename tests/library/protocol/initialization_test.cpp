// SPDX-License-Identifier: Apache-2.0

// Which messages are complete. The table is written by hand, not derived from the
// descriptors.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "support/messages.h"

namespace {

struct InitializationCase {
  const char* type;
  std::vector<const char*> complete;
  std::vector<const char*> incomplete;
};

const InitializationCase initializationCases[] = {
    {"Resource",
     {"scheme: DATA", "scheme: FTP"},
     {"", "host: 'h' port: 1 path: 'p' query: 'q' fragment: 'f'"}},
    {"Link",
     {"", "link_text: 't' docgen_filename: 'd'", "url { scheme: FILE }"},
     {"url { }", "url { path: 'p' }"}},
    {"Links",
     {"", "uri { } uri { url { scheme: FILE } }"},
     {"uri { url { } } uri { }", "uri { } uri { url { } }"}},
    {"Scalar", {"", "int_val: 1 double_val: 2 string_val: 's' address: 'a' units: 'u'"}, {}},
    {"Reference",
     {"type: ARRAY", "type: PORT value { }", "type: PORT url { scheme: FILE }"},
     {"", "name: 'n' id: 1 uuid: 'u'", "type: PORT url { }"}},
    {"RefList",
     {"", "ref { type: PORT } ref { type: LOOP }"},
     {"ref { } ref { type: LOOP }", "ref { type: LOOP } ref { }"}},
    {"StringList", {"", "msg: '' msg: 'm'"}, {}},
    {"Arg",
     {"", "scalar { }", "string_val: 's'", "ref { type: PORT }", "refs { ref { type: PORT } }",
      "uri { url { scheme: FILE } }", "uris { uri { } }"},
     {"ref { }", "refs { ref { } }", "uri { url { } }", "uris { uri { url { } } }"}},
    {"ArgList", {"", "arg { } arg { ref { type: PORT } }"}, {"arg { } arg { ref { } }"}},
    {"MsgInst",
     {"text: ''", "text: 't' args { arg { scalar { } } }"},
     {"", "args { }", "text: 't' args { arg { ref { } } }",
      "text: 't' args { arg { ref { type: PORT url { } } } }",
      "text: 't' args { arg { refs { ref { } } } }", "text: 't' args { arg { uri { url { } } } }",
      "text: 't' args { arg { uris { uri { url { } } } } }"}},
    {"Affirmation",
     {"id: 0", "id: 1 examples { uri { } } details { text: '' } resolution { text: '' }",
      "id: 1 actual_value { } threshold_value { }", "id: 1 categories { key: 1 }"},
     {"", "rule_key: 'k'", "id: 1 examples { uri { url { } } }", "id: 1 details { }",
      "id: 1 resolution { }"}},
    {"AffirmationMap",
     {"", "hashmap { key: 1 value { id: 1 } }"},
     {"hashmap { key: 1 value { } }",
      "hashmap { key: 1 value { id: 1 } } hashmap { key: 2 value { } }"}},
    {"Violation",
     {"id: 0 severity: SEV_ADVISORY",
      "id: 1 severity: SEV_ERROR examples { uri { url { scheme: FTP } } }",
      "id: 1 severity: SEV_ERROR actual_value { } threshold_value { }",
      "id: 1 severity: SEV_ERROR details { text: '' } resolution { text: '' }",
      "id: 1 severity: SEV_ERROR categories { }"},
     {"", "id: 0", "severity: SEV_ADVISORY",
      "id: 1 severity: SEV_ERROR examples { uri { url { } } }",
      "id: 1 severity: SEV_ERROR details { }", "id: 1 severity: SEV_ERROR resolution { }"}},
    {"ViolationMap",
     {"", "hashmap { key: 1 value { id: 1 severity: SEV_ERROR } }"},
     {"hashmap { key: 1 value { id: 1 } }", "hashmap { key: 1 value { severity: SEV_ERROR } }",
      "hashmap { key: 1 value { id: 1 severity: SEV_ERROR details { } } }"}},
    {"RuleSpec",
     {"key: '' full_name: ''",
      "key: 'k' full_name: 'n' first_release { major: 1 minor: 4 patch: 0 }",
      "key: 'k' full_name: 'n' description { scheme: HTTPS }",
      "key: 'k' full_name: 'n' session_names { } architectures { } threshold_value { } categories "
      "{ } dynamic_categories { }"},
     {"", "key: 'k'", "full_name: 'n'", "key: 'k' full_name: 'n' examples { uri { url { } } }",
      "key: 'k' full_name: 'n' first_release { major: 1 minor: 4 }",
      "key: 'k' full_name: 'n' description { }"}},
    {"RuleSpecMap",
     {"", "hashmap { key: 'k' value { key: 'k' full_name: 'n' } }"},
     {"hashmap { key: 'k' value { key: 'k' } }"}},
    {"Session",
     {"name: ''", "name: 'n' report_file { scheme: FILE } proto_file { scheme: FILE }"},
     {"", "uuid: 'u' description: 'd' timestamp: 1 build_target: 'b'", "name: 'n' report_file { }",
      "name: 'n' proto_file { }"}},
    {"SessionResult",
     {"session { name: 'n' }",
      "session { name: 'n' } violation_count: 1 waived_count: 1 affirmation_count: 1 violations { "
      "} waived_violations { } affirmations { } specs_violated { } specs_affirmed { }",
      "session { name: 'n' } violations { hashmap { key: 1 value { id: 1 severity: SEV_ERROR } } "
      "}"},
     {"", "session { }",
      "violation_count: 1 waived_count: 1 affirmation_count: 1 violations { } waived_violations { "
      "} affirmations { } specs_violated { } specs_affirmed { }",
      "session { name: 'n' } violations { hashmap { key: 1 value { } } }",
      "session { name: 'n' } violations { hashmap { key: 1 value { id: 1 severity: SEV_ERROR "
      "details { } } } }",
      "session { name: 'n' } violations { hashmap { key: 1 value { id: 1 severity: SEV_ERROR } } } "
      "waived_violations { hashmap { key: 1 value { id: 1 } } }",
      "session { name: 'n' } affirmations { hashmap { key: 1 value { } } }",
      "session { name: 'n' } specs_violated { hashmap { key: 'k' value { key: 'k' } } }",
      "session { name: 'n' } specs_affirmed { hashmap { key: 'k' value { key: 'k' } } }",
      "violation_count: 1 violations { hashmap { key: 1 value { id: 1 severity: SEV_ERROR } } } "
      "waived_violations { hashmap { key: 2 value { id: 2 severity: SEV_ERROR } } } affirmations { "
      "hashmap { key: 3 value { id: 3 } } } specs_violated { hashmap { key: 'k' value { key: 'k' "
      "full_name: 'n' } } } specs_affirmed { hashmap { key: 'l' value { key: 'l' full_name: 'n' } "
      "} }"}},
    {"Version",
     {"major: 0 minor: 0 patch: 0"},
     {"", "major: 1 minor: 4", "major: 1 patch: 0", "minor: 4 patch: 0"}},
    {"ErrorResponse", {"code: 0"}, {"", "msg: 'm'"}},
    {"StatusResponse", {"code: 0"}, {"", "msg: 'm'"}},
    {"EmptyMessage", {"", "noop: 1"}, {}},
    {"CreateAffirmation",
     {"rule_key: ''",
      "rule_key: 'k' args { } actual_value { } threshold_value { } dynamic_category_values { }"},
     {"", "session_uuid: 'u'", "rule_key: 'k' args { arg { ref { } } }"}},
    {"CreateViolation",
     {"rule_key: ''",
      "rule_key: 'k' args { } actual_value { } threshold_value { } dynamic_category_values { }"},
     {"", "session_uuid: 'u' severity: SEV_ERROR",
      "rule_key: 'k' args { arg { uri { url { } } } }"}},
    {"ExchangeToken", {"token: ''"}, {""}},
    {"GetSession", {"", "session_uuid: 'u'"}, {}},
    {"GetRuleSpecs", {"", "session { name: 'n' }"}, {"session { }"}},
    {"GetSessionResult", {"", "session_uuid: 'u'"}, {}},
    {"GetVersion", {"", "msg { }"}, {}},
    {"LoadRuleDataFile",
     {"", "validate: true pattern: 'p' regex: 'r'", "data_file { scheme: FILE }"},
     {"data_file { path: 'p' }"}},
    {"DumpRules",
     {"", "validate: true pattern: 'p' regex: 'r'", "data_file { scheme: FILE }"},
     {"data_file { path: 'p' }"}},
    {"ResetSession", {"", "session { name: 'n' }"}, {"session { uuid: 'u' }"}},
    {"StartSession",
     {"name: ''", "name: 'n' proto_file { scheme: FILE } report_file { scheme: FILE }"},
     {"", "pid: 1 uuid: 'u' description: 'd'", "name: 'n' proto_file { }",
      "name: 'n' report_file { }"}},
    {"StopSession", {"", "session { name: 'n' }"}, {"session { uuid: 'u' }"}},
    {"UpsertRuleSpec", {"", "rule_spec { key: 'k' full_name: 'n' }"}, {"rule_spec { key: 'k' }"}},
    {"WriteReport", {"", "session { name: 'n' }"}, {"session { uuid: 'u' }"}},
    {"Request",
     {"type: STOP_SERVER", "type: CREATE_AFFIRMATION create_affirmation { rule_key: 'k' }",
      "type: CREATE_VIOLATION create_violation { rule_key: 'k' }",
      "type: EXCHANGE_TOKEN exchange_token { token: 't' }", "type: GET_RULESPECS get_rulespecs { }",
      "type: GET_SESSION get_session { }", "type: GET_SESSION_RESULT get_session_result { }",
      "type: GET_VERSION get_version { msg { } }",
      "type: LOAD_RULESPEC_FILE load_rulespec_file { }", "type: RESET_SESSION reset_session { }",
      "type: START_SESSION start_session { name: 'n' }", "type: STOP_SESSION stop_session { }",
      "type: UPSERT_RULESPEC upsert_rulespec { }", "type: WRITE_REPORT write_report { }",
      "type: DUMP_RULES dump_rules { }"},
     {"", "get_version { }", "type: CREATE_AFFIRMATION create_affirmation { }",
      "type: CREATE_VIOLATION create_violation { }", "type: EXCHANGE_TOKEN exchange_token { }",
      "type: GET_RULESPECS get_rulespecs { session { } }",
      "type: LOAD_RULESPEC_FILE load_rulespec_file { data_file { } }",
      "type: RESET_SESSION reset_session { session { } }", "type: START_SESSION start_session { }",
      "type: STOP_SESSION stop_session { session { } }",
      "type: UPSERT_RULESPEC upsert_rulespec { rule_spec { } }",
      "type: WRITE_REPORT write_report { session { } }",
      "type: DUMP_RULES dump_rules { data_file { } }"}},
    {"Response",
     {"type: STATUS_RESPONSE", "type: STATUS_RESPONSE status { code: 0 }",
      "type: ERROR_RESPONSE error { code: 1 }", "type: AFFIRMATION affirmation { id: 1 }",
      "type: SESSION session { name: 'n' }",
      "type: SESSION_RESULT session_result { session { name: 'n' } }",
      "type: SESSION_RESULT session_result { session { name: 'n' } specs_violated { hashmap { key: "
      "'k' value { key: 'k' full_name: 'n' description { scheme: FILE } } } } }",
      "type: VERSION version { major: 1 minor: 4 patch: 0 }",
      "type: VIOLATION violation { id: 1 severity: SEV_ERROR }"},
     {"", "status { code: 0 }", "type: STATUS_RESPONSE status { }",
      "type: ERROR_RESPONSE error { }", "type: AFFIRMATION affirmation { }",
      "type: SESSION session { }", "type: SESSION_RESULT session_result { }",
      "type: SESSION_RESULT session_result { session { name: 'n' } specs_violated { hashmap { key: "
      "'k' value { key: 'k' full_name: 'n' description { } } } } }",
      "type: SESSION_RESULT session_result { session { name: 'n' } affirmations { hashmap { key: 1 "
      "value { id: 1 details { text: 't' args { arg { refs { ref { type: PORT url { } } } } } } } "
      "} } }",
      "type: VERSION version { major: 1 minor: 4 }", "type: VIOLATION violation { id: 1 }"}},
};

void check(const std::string& type, const std::string& text, bool isComplete) {
  SCOPED_TRACE(type + " { " + text + " }");
  const auto message = tests::newMessage(type);
  tests::fill(text, message.get());
  EXPECT_EQ(message->IsInitialized(), isComplete);
  std::string bytes;
  ASSERT_TRUE(message->SerializePartialToString(&bytes));
  const auto parsed = tests::newMessage(type);
  EXPECT_EQ(parsed->ParseFromString(bytes), isComplete);
  EXPECT_TRUE(parsed->ParsePartialFromString(bytes));
  EXPECT_EQ(tests::bytesOf(*parsed), tests::bytesOf(*message));
// In later releases a packaged runtime ends the process instead.
#if GOOGLE_PROTOBUF_VERSION < 4022000
  try {
    EXPECT_TRUE(message->SerializeToString(&bytes));
    EXPECT_EQ(bytes.size(), message->ByteSizeLong());
  } catch (const google::protobuf::FatalException&) {
    EXPECT_FALSE(isComplete);
  }
#endif
}

TEST(Initialization, DecidesWhetherMessagesParseAndSerialize) {
  std::set<std::string> types;
  for (const InitializationCase& c : initializationCases) {
    types.insert(c.type);
    for (const char* text : c.complete) {
      check(c.type, text, true);
    }
    for (const char* text : c.incomplete) {
      check(c.type, text, false);
    }
  }
  EXPECT_EQ(types.size(), tests::allMessages().size());
}

TEST(Initialization, TheErrorTextNamesMissingFieldsByTheirPaths) {
  const auto result = tests::parse<vok::rulecheck::SessionResult>(
      "violations { hashmap { key: 3 value { id: 1 details { } } } }");
  EXPECT_THAT(result.InitializationErrorString(),
              testing::AllOf(testing::HasSubstr("session"),
                             testing::HasSubstr("violations.hashmap[0].value.severity"),
                             testing::HasSubstr("violations.hashmap[0].value.details.text")));
}

}  // namespace
