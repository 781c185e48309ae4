// Which messages are complete. The table is written from the meaning of the
// messages, by hand; it does not ask the descriptors what is required.

#include <gmock/gmock.h>
#include <google/protobuf/descriptor.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "support/messages.h"

namespace {

struct InitializationCase {
  const char* type;
  const char* text;
  bool initialized;
};

const InitializationCase initializationCases[] = {
    {"Resource", "", false},
    {"Resource", "scheme: DATA", true},
    {"Resource", "scheme: FTP", true},
    {"Resource", "host: 'h' port: 1 path: 'p' query: 'q' fragment: 'f'", false},

    {"Link", "", true},
    {"Link", "link_text: 't' docgen_filename: 'd'", true},
    {"Link", "url { scheme: FILE }", true},
    {"Link", "url { }", false},
    {"Link", "url { path: 'p' }", false},

    {"Links", "", true},
    {"Links", "uri { } uri { url { scheme: FILE } }", true},
    {"Links", "uri { url { } } uri { }", false},
    {"Links", "uri { } uri { url { } }", false},

    {"Scalar", "", true},
    {"Scalar", "int_val: 1 double_val: 2 string_val: 's' address: 'a' units: 'u'", true},

    {"Reference", "", false},
    {"Reference", "type: ARRAY", true},
    {"Reference", "name: 'n' id: 1 uuid: 'u'", false},
    {"Reference", "type: PORT value { }", true},
    {"Reference", "type: PORT url { scheme: FILE }", true},
    {"Reference", "type: PORT url { }", false},

    {"RefList", "", true},
    {"RefList", "ref { type: PORT } ref { type: LOOP }", true},
    {"RefList", "ref { } ref { type: LOOP }", false},
    {"RefList", "ref { type: LOOP } ref { }", false},

    {"StringList", "", true},
    {"StringList", "msg: '' msg: 'm'", true},

    {"Arg", "", true},
    {"Arg", "scalar { }", true},
    {"Arg", "string_val: 's'", true},
    {"Arg", "ref { type: PORT }", true},
    {"Arg", "ref { }", false},
    {"Arg", "refs { ref { type: PORT } }", true},
    {"Arg", "refs { ref { } }", false},
    {"Arg", "uri { url { scheme: FILE } }", true},
    {"Arg", "uri { url { } }", false},
    {"Arg", "uris { uri { } }", true},
    {"Arg", "uris { uri { url { } } }", false},

    {"ArgList", "", true},
    {"ArgList", "arg { } arg { ref { type: PORT } }", true},
    {"ArgList", "arg { } arg { ref { } }", false},

    {"MsgInst", "", false},
    {"MsgInst", "text: ''", true},
    {"MsgInst", "args { }", false},
    {"MsgInst", "text: 't' args { arg { scalar { } } }", true},
    {"MsgInst", "text: 't' args { arg { ref { } } }", false},
    {"MsgInst", "text: 't' args { arg { ref { type: PORT url { } } } }", false},
    {"MsgInst", "text: 't' args { arg { refs { ref { } } } }", false},
    {"MsgInst", "text: 't' args { arg { uri { url { } } } }", false},
    {"MsgInst", "text: 't' args { arg { uris { uri { url { } } } } }", false},

    {"Affirmation", "", false},
    {"Affirmation", "id: 0", true},
    {"Affirmation", "rule_key: 'k'", false},
    {"Affirmation", "id: 1 examples { uri { } } details { text: '' } resolution { text: '' }",
     true},
    {"Affirmation", "id: 1 examples { uri { url { } } }", false},
    {"Affirmation", "id: 1 actual_value { } threshold_value { }", true},
    {"Affirmation", "id: 1 details { }", false},
    {"Affirmation", "id: 1 resolution { }", false},
    {"Affirmation", "id: 1 categories { key: 1 }", true},

    {"AffirmationMap", "", true},
    {"AffirmationMap", "hashmap { key: 1 value { id: 1 } }", true},
    {"AffirmationMap", "hashmap { key: 1 value { } }", false},
    {"AffirmationMap", "hashmap { key: 1 value { id: 1 } } hashmap { key: 2 value { } }", false},

    {"Violation", "", false},
    {"Violation", "id: 0", false},
    {"Violation", "severity: SEV_ADVISORY", false},
    {"Violation", "id: 0 severity: SEV_ADVISORY", true},
    {"Violation", "id: 1 severity: SEV_ERROR examples { uri { url { scheme: FTP } } }", true},
    {"Violation", "id: 1 severity: SEV_ERROR examples { uri { url { } } }", false},
    {"Violation", "id: 1 severity: SEV_ERROR actual_value { } threshold_value { }", true},
    {"Violation", "id: 1 severity: SEV_ERROR details { text: '' } resolution { text: '' }", true},
    {"Violation", "id: 1 severity: SEV_ERROR details { }", false},
    {"Violation", "id: 1 severity: SEV_ERROR resolution { }", false},
    {"Violation", "id: 1 severity: SEV_ERROR categories { }", true},

    {"ViolationMap", "", true},
    {"ViolationMap", "hashmap { key: 1 value { id: 1 severity: SEV_ERROR } }", true},
    {"ViolationMap", "hashmap { key: 1 value { id: 1 } }", false},
    {"ViolationMap", "hashmap { key: 1 value { severity: SEV_ERROR } }", false},
    {"ViolationMap", "hashmap { key: 1 value { id: 1 severity: SEV_ERROR details { } } }", false},

    {"RuleSpec", "", false},
    {"RuleSpec", "key: 'k'", false},
    {"RuleSpec", "full_name: 'n'", false},
    {"RuleSpec", "key: '' full_name: ''", true},
    {"RuleSpec", "key: 'k' full_name: 'n' examples { uri { url { } } }", false},
    {"RuleSpec", "key: 'k' full_name: 'n' first_release { major: 1 minor: 4 patch: 0 }", true},
    {"RuleSpec", "key: 'k' full_name: 'n' first_release { major: 1 minor: 4 }", false},
    {"RuleSpec", "key: 'k' full_name: 'n' description { scheme: HTTPS }", true},
    {"RuleSpec", "key: 'k' full_name: 'n' description { }", false},
    {"RuleSpec",
     "key: 'k' full_name: 'n' session_names { } architectures { } threshold_value { } "
     "categories { } dynamic_categories { }",
     true},

    {"RuleSpecMap", "", true},
    {"RuleSpecMap", "hashmap { key: 'k' value { key: 'k' full_name: 'n' } }", true},
    {"RuleSpecMap", "hashmap { key: 'k' value { key: 'k' } }", false},

    {"Session", "", false},
    {"Session", "name: ''", true},
    {"Session", "uuid: 'u' description: 'd' timestamp: 1 build_target: 'b'", false},
    {"Session", "name: 'n' report_file { scheme: FILE } proto_file { scheme: FILE }", true},
    {"Session", "name: 'n' report_file { }", false},
    {"Session", "name: 'n' proto_file { }", false},

    {"SessionResult", "", false},
    {"SessionResult", "session { name: 'n' }", true},
    {"SessionResult", "session { }", false},
    {"SessionResult",
     "violation_count: 1 waived_count: 1 affirmation_count: 1 violations { } "
     "waived_violations { } affirmations { } specs_violated { } specs_affirmed { }",
     false},
    {"SessionResult",
     "session { name: 'n' } violation_count: 1 waived_count: 1 affirmation_count: 1 violations { } "
     "waived_violations { } affirmations { } specs_violated { } specs_affirmed { }",
     true},
    {"SessionResult",
     "session { name: 'n' } violations { hashmap { key: 1 value { id: 1 severity: SEV_ERROR } } }",
     true},
    {"SessionResult", "session { name: 'n' } violations { hashmap { key: 1 value { } } }", false},
    {"SessionResult",
     "session { name: 'n' } violations { hashmap { key: 1 value { id: 1 severity: SEV_ERROR "
     "details { } } } }",
     false},
    {"SessionResult",
     "session { name: 'n' } violations { hashmap { key: 1 value { id: 1 severity: SEV_ERROR } } } "
     "waived_violations { hashmap { key: 1 value { id: 1 } } }",
     false},
    {"SessionResult", "session { name: 'n' } affirmations { hashmap { key: 1 value { } } }", false},
    {"SessionResult",
     "session { name: 'n' } specs_violated { hashmap { key: 'k' value { key: 'k' } } }", false},
    {"SessionResult",
     "session { name: 'n' } specs_affirmed { hashmap { key: 'k' value { key: 'k' } } }", false},
    {"SessionResult",
     "violation_count: 1 violations { hashmap { key: 1 value { id: 1 severity: SEV_ERROR } } } "
     "waived_violations { hashmap { key: 2 value { id: 2 severity: SEV_ERROR } } } "
     "affirmations { hashmap { key: 3 value { id: 3 } } } "
     "specs_violated { hashmap { key: 'k' value { key: 'k' full_name: 'n' } } } "
     "specs_affirmed { hashmap { key: 'l' value { key: 'l' full_name: 'n' } } }",
     false},

    {"Version", "", false},
    {"Version", "major: 1 minor: 4", false},
    {"Version", "major: 1 patch: 0", false},
    {"Version", "minor: 4 patch: 0", false},
    {"Version", "major: 0 minor: 0 patch: 0", true},

    {"ErrorResponse", "", false},
    {"ErrorResponse", "code: 0", true},
    {"ErrorResponse", "msg: 'm'", false},

    {"StatusResponse", "", false},
    {"StatusResponse", "code: 0", true},
    {"StatusResponse", "msg: 'm'", false},

    {"EmptyMessage", "", true},
    {"EmptyMessage", "noop: 1", true},

    {"CreateAffirmation", "", false},
    {"CreateAffirmation", "rule_key: ''", true},
    {"CreateAffirmation", "session_uuid: 'u'", false},
    {"CreateAffirmation", "rule_key: 'k' args { arg { ref { } } }", false},
    {"CreateAffirmation",
     "rule_key: 'k' args { } actual_value { } threshold_value { } dynamic_category_values { }",
     true},

    {"CreateViolation", "", false},
    {"CreateViolation", "rule_key: ''", true},
    {"CreateViolation", "session_uuid: 'u' severity: SEV_ERROR", false},
    {"CreateViolation", "rule_key: 'k' args { arg { uri { url { } } } }", false},
    {"CreateViolation",
     "rule_key: 'k' args { } actual_value { } threshold_value { } dynamic_category_values { }",
     true},

    {"ExchangeToken", "", false},
    {"ExchangeToken", "token: ''", true},

    {"GetSession", "", true},
    {"GetSession", "session_uuid: 'u'", true},

    {"GetRuleSpecs", "", true},
    {"GetRuleSpecs", "session { name: 'n' }", true},
    {"GetRuleSpecs", "session { }", false},

    {"GetSessionResult", "", true},
    {"GetSessionResult", "session_uuid: 'u'", true},

    {"GetVersion", "", true},
    {"GetVersion", "msg { }", true},

    {"LoadRuleDataFile", "", true},
    {"LoadRuleDataFile", "validate: true pattern: 'p' regex: 'r'", true},
    {"LoadRuleDataFile", "data_file { scheme: FILE }", true},
    {"LoadRuleDataFile", "data_file { path: 'p' }", false},

    {"DumpRules", "", true},
    {"DumpRules", "validate: true pattern: 'p' regex: 'r'", true},
    {"DumpRules", "data_file { scheme: FILE }", true},
    {"DumpRules", "data_file { path: 'p' }", false},

    {"ResetSession", "", true},
    {"ResetSession", "session { name: 'n' }", true},
    {"ResetSession", "session { uuid: 'u' }", false},

    {"StartSession", "", false},
    {"StartSession", "name: ''", true},
    {"StartSession", "pid: 1 uuid: 'u' description: 'd'", false},
    {"StartSession", "name: 'n' proto_file { scheme: FILE } report_file { scheme: FILE }", true},
    {"StartSession", "name: 'n' proto_file { }", false},
    {"StartSession", "name: 'n' report_file { }", false},

    {"StopSession", "", true},
    {"StopSession", "session { name: 'n' }", true},
    {"StopSession", "session { uuid: 'u' }", false},

    {"UpsertRuleSpec", "", true},
    {"UpsertRuleSpec", "rule_spec { key: 'k' full_name: 'n' }", true},
    {"UpsertRuleSpec", "rule_spec { key: 'k' }", false},

    {"WriteReport", "", true},
    {"WriteReport", "session { name: 'n' }", true},
    {"WriteReport", "session { uuid: 'u' }", false},

    {"Request", "", false},
    {"Request", "type: STOP_SERVER", true},
    {"Request", "get_version { }", false},
    {"Request", "type: CREATE_AFFIRMATION create_affirmation { rule_key: 'k' }", true},
    {"Request", "type: CREATE_AFFIRMATION create_affirmation { }", false},
    {"Request", "type: CREATE_VIOLATION create_violation { rule_key: 'k' }", true},
    {"Request", "type: CREATE_VIOLATION create_violation { }", false},
    {"Request", "type: EXCHANGE_TOKEN exchange_token { token: 't' }", true},
    {"Request", "type: EXCHANGE_TOKEN exchange_token { }", false},
    {"Request", "type: GET_RULESPECS get_rulespecs { }", true},
    {"Request", "type: GET_RULESPECS get_rulespecs { session { } }", false},
    {"Request", "type: GET_SESSION get_session { }", true},
    {"Request", "type: GET_SESSION_RESULT get_session_result { }", true},
    {"Request", "type: GET_VERSION get_version { msg { } }", true},
    {"Request", "type: LOAD_RULESPEC_FILE load_rulespec_file { }", true},
    {"Request", "type: LOAD_RULESPEC_FILE load_rulespec_file { data_file { } }", false},
    {"Request", "type: RESET_SESSION reset_session { }", true},
    {"Request", "type: RESET_SESSION reset_session { session { } }", false},
    {"Request", "type: START_SESSION start_session { name: 'n' }", true},
    {"Request", "type: START_SESSION start_session { }", false},
    {"Request", "type: STOP_SESSION stop_session { }", true},
    {"Request", "type: STOP_SESSION stop_session { session { } }", false},
    {"Request", "type: UPSERT_RULESPEC upsert_rulespec { }", true},
    {"Request", "type: UPSERT_RULESPEC upsert_rulespec { rule_spec { } }", false},
    {"Request", "type: WRITE_REPORT write_report { }", true},
    {"Request", "type: WRITE_REPORT write_report { session { } }", false},
    {"Request", "type: DUMP_RULES dump_rules { }", true},
    {"Request", "type: DUMP_RULES dump_rules { data_file { } }", false},

    {"Response", "", false},
    {"Response", "type: STATUS_RESPONSE", true},
    {"Response", "status { code: 0 }", false},
    {"Response", "type: STATUS_RESPONSE status { code: 0 }", true},
    {"Response", "type: STATUS_RESPONSE status { }", false},
    {"Response", "type: ERROR_RESPONSE error { code: 1 }", true},
    {"Response", "type: ERROR_RESPONSE error { }", false},
    {"Response", "type: AFFIRMATION affirmation { id: 1 }", true},
    {"Response", "type: AFFIRMATION affirmation { }", false},
    {"Response", "type: SESSION session { name: 'n' }", true},
    {"Response", "type: SESSION session { }", false},
    {"Response", "type: SESSION_RESULT session_result { session { name: 'n' } }", true},
    {"Response", "type: SESSION_RESULT session_result { }", false},
    {"Response",
     "type: SESSION_RESULT session_result { session { name: 'n' } specs_violated { hashmap { "
     "key: 'k' value { key: 'k' full_name: 'n' description { scheme: FILE } } } } }",
     true},
    {"Response",
     "type: SESSION_RESULT session_result { session { name: 'n' } specs_violated { hashmap { "
     "key: 'k' value { key: 'k' full_name: 'n' description { } } } } }",
     false},
    {"Response",
     "type: SESSION_RESULT session_result { session { name: 'n' } affirmations { hashmap { "
     "key: 1 value { id: 1 details { text: 't' args { arg { refs { ref { type: PORT url { } } } "
     "} } } } } } }",
     false},
    {"Response", "type: VERSION version { major: 1 minor: 4 patch: 0 }", true},
    {"Response", "type: VERSION version { major: 1 minor: 4 }", false},
    {"Response", "type: VIOLATION violation { id: 1 severity: SEV_ERROR }", true},
    {"Response", "type: VIOLATION violation { id: 1 }", false},
};

TEST(Initialization, IsInitializedFollowsTheTable) {
  for (const InitializationCase& c : initializationCases) {
    const auto message = tests::newMessage(c.type);
    tests::fill(c.text, message.get());
    EXPECT_EQ(message->IsInitialized(), c.initialized) << c.type << " { " << c.text << " }";
  }
}

TEST(Initialization, TheTableCoversEveryMessageEmptyAndFilled) {
  std::set<std::string> empty;
  std::set<std::string> complete;
  std::set<std::string> incomplete;
  for (const InitializationCase& c : initializationCases) {
    (*c.text == '\0' ? empty : c.initialized ? complete : incomplete).insert(c.type);
  }
  const std::set<std::string> neverIncompleteWhenFilled = {
      "Scalar",           "StringList", "EmptyMessage", "GetSession",
      "GetSessionResult", "GetVersion", "ExchangeToken"};
  for (const google::protobuf::Message* message : tests::allMessages()) {
    const std::string type(message->GetDescriptor()->name());
    EXPECT_EQ(empty.count(type), 1u) << type;
    EXPECT_EQ(complete.count(type), 1u) << type;
    EXPECT_EQ(incomplete.count(type) + neverIncompleteWhenFilled.count(type), 1u) << type;
  }
}

TEST(Initialization, SeventeenMessagesAreIncompleteWhenEmpty) {
  std::set<std::string> incomplete;
  for (const google::protobuf::Message* message : tests::allMessages()) {
    if (!message->IsInitialized()) {
      incomplete.emplace(message->GetDescriptor()->name());
    }
  }
  EXPECT_THAT(incomplete, testing::UnorderedElementsAre(
                              "Resource", "Reference", "MsgInst", "Affirmation", "Violation",
                              "RuleSpec", "Session", "SessionResult", "Version", "ErrorResponse",
                              "StatusResponse", "CreateAffirmation", "CreateViolation",
                              "ExchangeToken", "StartSession", "Request", "Response"));
}

TEST(Initialization, ParsingChecksCompletenessUnlessItIsPartial) {
  for (const InitializationCase& c : initializationCases) {
    const auto message = tests::newMessage(c.type);
    tests::fill(c.text, message.get());
    const std::string bytes = tests::bytesOf(*message);
    EXPECT_EQ(message->ParseFromString(bytes), c.initialized) << c.type << " { " << c.text << " }";
    EXPECT_TRUE(message->ParsePartialFromString(bytes)) << c.type << " { " << c.text << " }";
  }
}

// In later releases a packaged runtime ends the process instead.
#if GOOGLE_PROTOBUF_VERSION < 4022000
TEST(Initialization, SerializingAnIncompleteMessageThrowsOrWritesThePartialBytes) {
  for (const InitializationCase& c : initializationCases) {
    const auto message = tests::newMessage(c.type);
    tests::fill(c.text, message.get());
    std::string bytes;
    bool isThrown = false;
    try {
      EXPECT_TRUE(message->SerializeToString(&bytes)) << c.type << " { " << c.text << " }";
    } catch (const google::protobuf::FatalException&) {
      isThrown = true;
    }
    if (isThrown) {
      EXPECT_FALSE(c.initialized) << c.type << " { " << c.text << " }";
    } else {
      EXPECT_EQ(bytes.size(), message->ByteSizeLong()) << c.type << " { " << c.text << " }";
    }
  }
}
#endif

TEST(Initialization, SerializingPartiallyAlwaysWorks) {
  for (const InitializationCase& c : initializationCases) {
    const auto message = tests::newMessage(c.type);
    tests::fill(c.text, message.get());
    std::string bytes;
    EXPECT_TRUE(message->SerializePartialToString(&bytes)) << c.type << " { " << c.text << " }";
    const auto parsed = tests::newMessage(c.type);
    EXPECT_TRUE(parsed->ParsePartialFromString(bytes)) << c.type << " { " << c.text << " }";
    EXPECT_EQ(tests::bytesOf(*parsed), tests::bytesOf(*message))
        << c.type << " { " << c.text << " }";
  }
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
