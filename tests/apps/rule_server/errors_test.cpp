// What the server refuses, and with which code.

#include "rule_server/errors.h"

#include <gmock/gmock.h>
#include <google/protobuf/unknown_field_set.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/messages.h"
#include "test_server.h"

namespace tests {
namespace {

using rule_server::ErrorCode;
using vok::rulecheck::Request;
using vok::rulecheck::Response;

struct ErrorCase {
  const char* name;
  std::vector<std::string> before;
  std::string request;
  ErrorCode code;
  // A part of the text.
  const char* text;
};

std::string startWith(const std::string& address) {
  return "type: START_SESSION start_session { name: 'n' uuid: 's' " + address + " }";
}

const char* const kWrite = "type: WRITE_REPORT write_report { session { name: '' uuid: 's' } }";

std::string load(const std::string& fields) {
  return "type: LOAD_RULESPEC_FILE load_rulespec_file { " + fields + " }";
}

std::string dump(const std::string& fields) {
  return "type: DUMP_RULES dump_rules { " + fields + " }";
}

std::string violation(const std::string& fields) {
  return "type: CREATE_VIOLATION create_violation { " + fields + " }";
}

std::string affirmation(const std::string& fields) {
  return "type: CREATE_AFFIRMATION create_affirmation { " + fields + " }";
}

std::string rule(const std::string& fields) {
  return "type: UPSERT_RULESPEC upsert_rulespec { rule_spec { " + fields + " } }";
}

std::vector<ErrorCase> envelopeErrors() {
  return {
      {"nothing at all", {}, "", ErrorCode::TypeMissing, "no type"},
      {"a body without a type", {}, "get_version { }", ErrorCode::TypeMissing, "no type"},
      {"a type without its body",
       {},
       "type: GET_VERSION",
       ErrorCode::BodyMissing,
       "GET_VERSION needs the body get_version"},
      {"a stop without a token",
       {},
       "type: STOP_SERVER",
       ErrorCode::BodyMissing,
       "STOP_SERVER needs the body exchange_token"},
      {"the body of another type",
       {},
       "type: GET_VERSION get_session { }",
       ErrorCode::BodyMismatch,
       "GET_VERSION does not go with the body get_session"},
      {"two bodies",
       {},
       "type: GET_VERSION get_version { } get_session { }",
       ErrorCode::BodyMismatch,
       "get_session"},
      {"a body that lacks something",
       {},
       "type: EXCHANGE_TOKEN exchange_token { }",
       ErrorCode::BodyIncomplete,
       "missing exchange_token.token"},
      {"a body that lacks something deep inside",
       {},
       rule("key: 'k' full_name: 'f' description { }"),
       ErrorCode::BodyIncomplete,
       "upsert_rulespec.rule_spec.description.scheme"},
      {"a request to a stopped server",
       {"type: STOP_SERVER exchange_token { token: 'secret' }"},
       "type: GET_VERSION get_version { }",
       ErrorCode::ServerStopped,
       "stopped"},
      {"a wrong token",
       {},
       "type: EXCHANGE_TOKEN exchange_token { token: 'Secret' }",
       ErrorCode::TokenRefused,
       "token"},
      {"an empty token",
       {},
       "type: EXCHANGE_TOKEN exchange_token { token: '' }",
       ErrorCode::TokenRefused,
       "token"},
      {"a stop with a wrong token",
       {},
       "type: STOP_SERVER exchange_token { token: 'x' }",
       ErrorCode::TokenRefused,
       "token"},
  };
}

std::vector<ErrorCase> sessionErrors() {
  return {
      {"an affirmation in an unknown session",
       {kRule},
       affirmation("rule_key: 'W' session_uuid: 'x'"),
       ErrorCode::SessionUnknown,
       "\"x\""},
      {"a violation in no session",
       {kRule},
       violation("rule_key: 'W'"),
       ErrorCode::SessionUnknown,
       "no session is named"},
      {"rules of an unknown session",
       {},
       "type: GET_RULESPECS get_rulespecs { session { name: 'n' uuid: 's' } }",
       ErrorCode::SessionUnknown,
       "\"s\""},
      {"rules of no session",
       {kStart},
       "type: GET_RULESPECS get_rulespecs { }",
       ErrorCode::SessionUnknown,
       "no session is named"},
      {"no session",
       {kStart},
       "type: GET_SESSION get_session { }",
       ErrorCode::SessionUnknown,
       "no session is named"},
      {"an unknown session",
       {kStart},
       "type: GET_SESSION get_session { session_uuid: 'S' }",
       ErrorCode::SessionUnknown,
       "\"S\""},
      {"the result of an unknown session",
       {},
       "type: GET_SESSION_RESULT get_session_result { session_uuid: 's' }",
       ErrorCode::SessionUnknown,
       "\"s\""},
      {"the reset of no session",
       {kStart},
       "type: RESET_SESSION reset_session { }",
       ErrorCode::SessionUnknown,
       "no session is named"},
      {"the stop of a session that only a name is given for",
       {kStart},
       "type: STOP_SESSION stop_session { session { name: 'n' } }",
       ErrorCode::SessionUnknown,
       "no session is named"},
      {"the report of an unknown session", {}, kWrite, ErrorCode::SessionUnknown, "\"s\""},
      {"a uuid that is taken", {kStart}, kStart, ErrorCode::SessionExists, "\"s\""},
      {"a uuid that a stopped session has",
       {kStart, kStop},
       kStart,
       ErrorCode::SessionExists,
       "\"s\""},
      {"a violation in a stopped session",
       {kStart, kRule, kStop},
       violation("rule_key: 'W' session_uuid: 's'"),
       ErrorCode::SessionStopped,
       "stopped"},
      {"an affirmation in a stopped session",
       {kStart, kRule, kStop},
       affirmation("rule_key: 'W' session_uuid: 's'"),
       ErrorCode::SessionStopped,
       "stopped"},
      {"the reset of a stopped session",
       {kStart, kStop},
       "type: RESET_SESSION reset_session { session { name: '' uuid: 's' } }",
       ErrorCode::SessionStopped,
       "stopped"},
      {"a second stop", {kStart, kStop}, kStop, ErrorCode::SessionStopped, "stopped"},
  };
}

std::vector<ErrorCase> ruleErrors() {
  const std::string ofRule = "rule_key: 'W' session_uuid: 's' ";
  return {
      {"a violation of an unknown rule",
       {kStart},
       violation(ofRule),
       ErrorCode::RuleUnknown,
       "\"W\""},
      {"an affirmation of an unknown rule",
       {kStart, kRule},
       affirmation("rule_key: '' session_uuid: 's'"),
       ErrorCode::RuleUnknown,
       "\"\""},
      {"a violation of a planned rule",
       {kStart, kPlannedRule},
       violation("rule_key: 'P' session_uuid: 's'"),
       ErrorCode::RulePlanned,
       "\"P\""},
      {"an affirmation of a planned rule",
       {kStart, kPlannedRule},
       affirmation("rule_key: 'P' session_uuid: 's'"),
       ErrorCode::RulePlanned,
       "\"P\""},
      {"another rule in place of a read-only one",
       {kReadOnlyRule},
       rule("key: 'R' full_name: 'x'"),
       ErrorCode::RuleReadOnly,
       "\"R\""},
      {"no rule",
       {},
       "type: UPSERT_RULESPEC upsert_rulespec { }",
       ErrorCode::RuleInvalid,
       "no rule_spec"},
      {"an empty key", {}, rule("key: '' full_name: 'f'"), ErrorCode::RuleInvalid, "1 to 255"},
      {"a key of 256 bytes",
       {},
       rule("key: '" + std::string(256, 'k') + "' full_name: 'f'"),
       ErrorCode::RuleInvalid,
       "1 to 255"},
      {"an empty full name",
       {},
       rule("key: 'k' full_name: ''"),
       ErrorCode::RuleInvalid,
       "full name"},
      {"a rule with the category of waivers",
       {},
       rule("key: 'k' full_name: 'f' categories { key: 1 value: 'x' }"),
       ErrorCode::RuleInvalid,
       "category 1"},
      {"a rule with the category of waivers as a dynamic one",
       {},
       rule("key: 'k' full_name: 'f' dynamic_categories { key: 1 value: false }"),
       ErrorCode::RuleInvalid,
       "category 1"},
      {"a dynamic category that the rule has not",
       {kStart, kRule},
       violation(ofRule + "dynamic_category_values { key: '5' value: 'x' }"),
       ErrorCode::CategoryRefused,
       "\"5\""},
      {"a dynamic category that is no number",
       {kStart, kRule},
       affirmation(ofRule + "dynamic_category_values { key: 'x' value: 'x' }"),
       ErrorCode::CategoryRefused,
       "\"x\""},
      {"the category of waivers by its number",
       {kStart, kRule},
       violation(ofRule + "dynamic_category_values { key: '1' value: 'x' }"),
       ErrorCode::CategoryRefused,
       "\"1\""},
      {"a waiver without a reason",
       {kStart, kRule},
       violation(ofRule + "dynamic_category_values { key: 'waiver' value: '' }"),
       ErrorCode::CategoryRefused,
       "reason"},
      {"the waiver of an affirmation",
       {kStart, kRule},
       affirmation(ofRule + "dynamic_category_values { key: 'waiver' value: 'r' }"),
       ErrorCode::CategoryRefused,
       "\"waiver\""},
  };
}

std::vector<ErrorCase> fileErrors() {
  const std::string file = "data_file { scheme: FILE path: 'r.txt' } ";
  return {
      {"a load without a file", {}, load(""), ErrorCode::FileAddress, "no data_file"},
      {"a dump without a file", {}, dump("validate: true"), ErrorCode::FileAddress, "no data_file"},
      {"a load from the web",
       {},
       load("data_file { scheme: HTTP path: 'r.txt' }"),
       ErrorCode::FileAddress,
       "file on this host"},
      {"a dump to another host",
       {},
       dump("data_file { scheme: FILE host: 'h' path: 'r.txt' }"),
       ErrorCode::FileAddress,
       "file on this host"},
      {"a file without a path",
       {},
       load("data_file { scheme: FILE }"),
       ErrorCode::FileAddress,
       "file on this host"},
      {"a file with an empty path",
       {},
       dump("data_file { scheme: FILE path: '' }"),
       ErrorCode::FileAddress,
       "file on this host"},
      {"a file with a zero byte in its path",
       {},
       dump("data_file { scheme: FILE path: '\\0r.txt' }"),
       ErrorCode::FileAddress,
       "file on this host"},
      {"a report without addresses", {kStart}, kWrite, ErrorCode::FileAddress, "neither"},
      {"a report to the web",
       {startWith("report_file { scheme: HTTPS path: 'p' }")},
       kWrite,
       ErrorCode::FileAddress,
       "file on this host"},
      {"a result to an address of another kind",
       {startWith("proto_file { scheme: DATA path: 'p.pb' }")},
       kWrite,
       ErrorCode::FileAddress,
       "file on this host"},
      {"rules from a file that is not there",
       {},
       load(file),
       ErrorCode::FileAccess,
       "r.txt: cannot be read"},
      {"rules to a file that can't be written",
       {},
       dump("data_file { scheme: FILE path: '/broken.pb' }"),
       ErrorCode::FileAccess,
       "/broken.pb: cannot be written"},
      {"a report to a file that can't be written",
       {startWith("report_file { scheme: FILE path: '/broken.html' }")},
       kWrite,
       ErrorCode::FileAccess,
       "/broken.html: cannot be written"},
      {"rules from a file with an unknown extension",
       {},
       load("data_file { scheme: FILE path: 'r.xml' }"),
       ErrorCode::FileFormat,
       "extension"},
      {"rules to a file without an extension",
       {},
       dump("data_file { scheme: FILE path: 'r' }"),
       ErrorCode::FileFormat,
       "extension"},
      {"a result to a file with an unknown extension",
       {startWith("proto_file { scheme: FILE path: 'p.xml' }")},
       kWrite,
       ErrorCode::FileFormat,
       "extension"},
      {"a page to a file with another extension",
       {startWith("report_file { scheme: FILE path: 'authorized_keys' }")},
       kWrite,
       ErrorCode::FileFormat,
       "authorized_keys: a report has the extension .html or .htm"},
      {"a page to the file of the result",
       {startWith("report_file { scheme: FILE path: 'p.pb' } "
                  "proto_file { scheme: FILE path: 'p.pb' }")},
       kWrite,
       ErrorCode::FileFormat,
       "p.pb: a report has the extension"},
      {"malformed text",
       {},
       load("data_file { scheme: FILE path: 'bad.txt' }"),
       ErrorCode::FileFormat,
       "bad.txt: 1:"},
      {"malformed bytes",
       {},
       load("data_file { scheme: FILE path: 'bad.pb' }"),
       ErrorCode::FileFormat,
       "bad.pb: malformed"},
      {"malformed JSON",
       {},
       load("data_file { scheme: FILE path: 'bad.json' }"),
       ErrorCode::FileFormat,
       "bad.json: "},
      {"rules that lack something",
       {},
       load("data_file { scheme: FILE path: 'partial.txt' }"),
       ErrorCode::FileFormat,
       "missing"},
      {"an invalid rule in a file to validate",
       {},
       load("data_file { scheme: FILE path: 'invalid.txt' } validate: true"),
       ErrorCode::RuleInvalid,
       "stands under the key \"a\""},
      {"a long key in a file to validate, whether or not it is selected",
       {},
       load("data_file { scheme: FILE path: 'long.txt' } pattern: 'b' validate: true"),
       ErrorCode::RuleInvalid,
       "1 to 255"},
      {"a long pattern",
       {},
       load(file + "pattern: '" + std::string(1001, '*') + "'"),
       ErrorCode::SelectionInvalid,
       "more than 1000 bytes"},
      {"a long regular expression",
       {},
       dump(file + "regex: '" + std::string(1001, 'a') + "'"),
       ErrorCode::SelectionInvalid,
       "more than 1000 bytes"},
      {"a malformed regular expression",
       {},
       load(file + "regex: '('"),
       ErrorCode::SelectionInvalid,
       "\"(\""},
      {"a malformed regular expression for a dump",
       {},
       dump(file + "regex: '['"),
       ErrorCode::SelectionInvalid,
       "\"[\""},
      {"a look-ahead",
       {},
       load(file + "regex: '(?=a)'"),
       ErrorCode::SelectionInvalid,
       "regex \"(?=a)\""},
      {"a back-reference",
       {},
       load(file + "regex: '(a)\\\\1'"),
       ErrorCode::SelectionInvalid,
       "regex"},
      {"a regular expression that would need too much memory",
       {},
       load(file + "regex: '((a{100}){100}){100}'"),
       ErrorCode::SelectionInvalid,
       "regex"},
      {"a page that fails",
       {"type: START_SESSION start_session { name: 'unprintable' uuid: 's'"
        "  report_file { scheme: FILE path: 'r.html' } }"},
       kWrite,
       ErrorCode::Internal,
       "no page"},
  };
}

void expectErrors(const std::vector<ErrorCase>& cases) {
  for (const ErrorCase& c : cases) {
    SCOPED_TRACE(c.name);
    TestServer server;
    server.files.contents = {{"r.xml", ""},
                             {"bad.txt", "hashmap {"},
                             {"bad.pb", "\x0a"},
                             {"bad.json", "{"},
                             {"long.txt", "hashmap { key: '" + std::string(256, 'k') +
                                              "' value { key: 'k' full_name: 'f' } }"},
                             {"partial.txt", "hashmap { key: 'a' value { key: 'a' } }"},
                             {"invalid.txt",
                              "hashmap { key: 'a' value { key: 'b' full_name: 'f' } }"
                              "hashmap { key: 'c' value { key: '' full_name: 'f' } }"}};
    server.prepare(c.before);
    const Response response = server.ask(c.request);
    ASSERT_EQ(Response::ERROR_RESPONSE, response.type()) << textOf(response);
    EXPECT_EQ(static_cast<int>(c.code), response.error().code()) << textOf(response);
    EXPECT_THAT(response.error().msg(), testing::HasSubstr(c.text));
    EXPECT_EQ(std::string::npos, response.error().msg().find('\n'));
  }
}

TEST(Errors, OfTheEnvelope) {
  expectErrors(envelopeErrors());
}
TEST(Errors, OfSessions) {
  expectErrors(sessionErrors());
}
TEST(Errors, OfRules) {
  expectErrors(ruleErrors());
}
TEST(Errors, OfFiles) {
  expectErrors(fileErrors());
}

// The codes are a contract: clients have them.
TEST(Errors, KeepTheirCodes) {
  const std::vector<std::pair<ErrorCode, int>> codes = {
      {ErrorCode::TypeMissing, 1},     {ErrorCode::BodyMismatch, 2},
      {ErrorCode::BodyMissing, 3},     {ErrorCode::BodyIncomplete, 4},
      {ErrorCode::ServerStopped, 5},   {ErrorCode::TokenRefused, 6},
      {ErrorCode::SessionUnknown, 10}, {ErrorCode::SessionStopped, 11},
      {ErrorCode::SessionExists, 12},  {ErrorCode::RuleUnknown, 20},
      {ErrorCode::RulePlanned, 21},    {ErrorCode::RuleReadOnly, 22},
      {ErrorCode::RuleInvalid, 23},    {ErrorCode::CategoryRefused, 24},
      {ErrorCode::FileAddress, 30},    {ErrorCode::FileAccess, 31},
      {ErrorCode::FileFormat, 32},     {ErrorCode::SelectionInvalid, 33},
      {ErrorCode::Internal, 40},       {ErrorCode::LimitExceeded, 41},
  };
  for (const auto& code : codes) {
    EXPECT_EQ(code.second, static_cast<int>(code.first));
  }
}

TEST(Errors, ChangeNothing) {
  TestServer server;
  server.prepare({kStart, kRule, kPlannedRule});
  const std::string before = bytesOf(server.result());
  for (const char* const request :
       {"type: CREATE_VIOLATION create_violation { rule_key: 'P' session_uuid: 's' }",
        "type: CREATE_VIOLATION create_violation { rule_key: 'W' session_uuid: 's'"
        "  dynamic_category_values { key: 'x' value: 'y' } }",
        "type: START_SESSION start_session { name: 'other' uuid: 's' description: 'd' }",
        "type: WRITE_REPORT write_report { session { name: '' uuid: 's' } }"}) {
    EXPECT_EQ(Response::ERROR_RESPONSE, server.ask(request).type()) << request;
    EXPECT_EQ(before, bytesOf(server.result())) << request;
  }
  EXPECT_TRUE(server.files.contents.empty());
}

TEST(Errors, CutLongTexts) {
  TestServer server;
  Request request = parse<Request>("type: GET_SESSION get_session { }");
  request.mutable_get_session()->set_session_uuid(std::string(1000000, 'u'));
  EXPECT_LT(server.ask(request).error().msg().size(), 200u);
}

TEST(Errors, HaveOneLine) {
  TestServer server;
  EXPECT_EQ("there is no session \"a  b\"",
            server.ask("type: GET_SESSION get_session { session_uuid: 'a\\r\\nb' }").error().msg());
}

TEST(Errors, AreNotCutAtZeroBytes) {
  TestServer server;
  EXPECT_EQ("there is no session \"a b\"",
            server.ask("type: GET_SESSION get_session { session_uuid: 'a\\0b' }").error().msg());
}

TEST(Errors, QuoteTexts) {
  EXPECT_EQ("\"abc\"", rule_server::quoted("abc"));
  EXPECT_EQ('"' + std::string(100, 'a') + '"', rule_server::quoted(std::string(100, 'a')));
  EXPECT_EQ('"' + std::string(100, 'a') + "...\"", rule_server::quoted(std::string(101, 'a')));
}

int bodyOf(int type) {
  return type == Request::STOP_SERVER ? Request::kExchangeTokenFieldNumber : type + 1;
}

// Each type with each body that is not its own, alone and beside its own.
TEST(Errors, OfBodiesThatDoNotBelongToTheType) {
  int pairs = 0;
  for (int type = Request::CREATE_AFFIRMATION; type <= Request::STOP_SERVER; ++type) {
    for (int body = Request::kCreateAffirmationFieldNumber; body <= Request::kDumpRulesFieldNumber;
         ++body) {
      if (body == bodyOf(type)) {
        continue;
      }
      ++pairs;
      Request request;
      request.set_type(static_cast<Request::RequestType>(type));
      const auto* reflection = request.GetReflection();
      reflection->MutableMessage(&request, Request::descriptor()->FindFieldByNumber(body));
      TestServer server;
      EXPECT_EQ(static_cast<int>(ErrorCode::BodyMismatch), server.ask(request).error().code())
          << textOf(request);
      reflection->MutableMessage(&request, Request::descriptor()->FindFieldByNumber(bodyOf(type)));
      EXPECT_EQ(static_cast<int>(ErrorCode::BodyMismatch), server.ask(request).error().code())
          << textOf(request);
    }
  }
  EXPECT_EQ(15 * 13, pairs);
}

TEST(Errors, OfTypesThatAreNotListed) {
  TestServer server;
  Request request;
  ASSERT_TRUE(request.ParsePartialFromString(fromHex("08 10")));
  EXPECT_EQ(static_cast<int>(ErrorCode::TypeMissing), server.ask(request).error().code());
}

TEST(Requests, MayHaveUnknownFields) {
  TestServer server;
  Request request = parse<Request>("type: GET_VERSION get_version { }");
  auto* unknown = request.GetReflection()->MutableUnknownFields(&request);
  unknown->AddVarint(1000, 1);
  unknown->AddLengthDelimited(1001, "\xff\xfe");
  EXPECT_EQ(Response::VERSION, server.ask(request).type());
}

}  // namespace
}  // namespace tests
