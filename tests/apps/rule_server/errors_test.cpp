// SPDX-License-Identifier: Apache-2.0

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

using Code = rule_server::ErrorCode;
using vok::rulecheck::Request;
using vok::rulecheck::Response;

struct ErrorCase {
  std::vector<std::string> before;
  std::string request;
  Code code;
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
      {{}, "", Code::TypeMissing, "no type"},
      {{}, "get_version { }", Code::TypeMissing, "no type"},
      {{}, "type: GET_VERSION", Code::BodyMissing, "GET_VERSION needs the body get_version"},
      {{}, "type: STOP_SERVER", Code::BodyMissing, "STOP_SERVER needs the body exchange_token"},
      {{},
       "type: GET_VERSION get_session { }",
       Code::BodyMismatch,
       "GET_VERSION does not go with the body get_session"},
      {{}, "type: GET_VERSION get_version { } get_session { }", Code::BodyMismatch, "get_session"},
      {{},
       "type: EXCHANGE_TOKEN exchange_token { }",
       Code::BodyIncomplete,
       "missing exchange_token.token"},
      {{},
       rule("key: 'k' full_name: 'f' description { }"),
       Code::BodyIncomplete,
       "upsert_rulespec.rule_spec.description.scheme"},
      {{"type: STOP_SERVER exchange_token { token: 'secret' }"},
       "type: GET_VERSION get_version { }",
       Code::ServerStopped,
       "stopped"},
      {{}, "type: EXCHANGE_TOKEN exchange_token { token: 'Secret' }", Code::TokenRefused, "token"},
      {{}, "type: EXCHANGE_TOKEN exchange_token { token: '' }", Code::TokenRefused, "token"},
      {{}, "type: STOP_SERVER exchange_token { token: 'x' }", Code::TokenRefused, "token"},
  };
}

std::vector<ErrorCase> sessionErrors() {
  return {
      {{kRule}, affirmation("rule_key: 'W' session_uuid: 'x'"), Code::SessionUnknown, "\"x\""},
      {{kRule}, violation("rule_key: 'W'"), Code::SessionUnknown, "no session is named"},
      {{},
       "type: GET_RULESPECS get_rulespecs { session { name: 'n' uuid: 's' } }",
       Code::SessionUnknown,
       "\"s\""},
      {{kStart},
       "type: GET_RULESPECS get_rulespecs { }",
       Code::SessionUnknown,
       "no session is named"},
      {{kStart}, "type: GET_SESSION get_session { }", Code::SessionUnknown, "no session is named"},
      {{kStart},
       "type: GET_SESSION get_session { session_uuid: 'S' }",
       Code::SessionUnknown,
       "\"S\""},
      {{},
       "type: GET_SESSION_RESULT get_session_result { session_uuid: 's' }",
       Code::SessionUnknown,
       "\"s\""},
      {{kStart},
       "type: RESET_SESSION reset_session { }",
       Code::SessionUnknown,
       "no session is named"},
      {{kStart},
       "type: STOP_SESSION stop_session { session { name: 'n' } }",
       Code::SessionUnknown,
       "no session is named"},
      {{}, kWrite, Code::SessionUnknown, "\"s\""},
      {{kStart}, kStart, Code::SessionExists, "\"s\""},
      {{kStart, kStop}, kStart, Code::SessionExists, "\"s\""},
      {{kStart, kRule, kStop},
       violation("rule_key: 'W' session_uuid: 's'"),
       Code::SessionStopped,
       "stopped"},
      {{kStart, kRule, kStop},
       affirmation("rule_key: 'W' session_uuid: 's'"),
       Code::SessionStopped,
       "stopped"},
      {{kStart, kStop},
       "type: RESET_SESSION reset_session { session { name: '' uuid: 's' } }",
       Code::SessionStopped,
       "stopped"},
      {{kStart, kStop}, kStop, Code::SessionStopped, "stopped"},
  };
}

std::vector<ErrorCase> ruleErrors() {
  const std::string ofRule = "rule_key: 'W' session_uuid: 's' ";
  return {
      {{kStart}, violation(ofRule), Code::RuleUnknown, "\"W\""},
      {{kStart, kRule}, affirmation("rule_key: '' session_uuid: 's'"), Code::RuleUnknown, "\"\""},
      {{kStart, kPlannedRule},
       violation("rule_key: 'P' session_uuid: 's'"),
       Code::RulePlanned,
       "\"P\""},
      {{kStart, kPlannedRule},
       affirmation("rule_key: 'P' session_uuid: 's'"),
       Code::RulePlanned,
       "\"P\""},
      {{kReadOnlyRule}, rule("key: 'R' full_name: 'x'"), Code::RuleReadOnly, "\"R\""},
      {{}, "type: UPSERT_RULESPEC upsert_rulespec { }", Code::RuleInvalid, "no rule_spec"},
      {{}, rule("key: '' full_name: 'f'"), Code::RuleInvalid, "1 to 255"},
      {{},
       rule("key: '" + std::string(256, 'k') + "' full_name: 'f'"),
       Code::RuleInvalid,
       "1 to 255"},
      {{}, rule("key: 'k' full_name: ''"), Code::RuleInvalid, "full name"},
      {{},
       rule("key: 'k' full_name: 'f' categories { key: 1 value: 'x' }"),
       Code::RuleInvalid,
       "category 1"},
      {{},
       rule("key: 'k' full_name: 'f' dynamic_categories { key: 1 value: false }"),
       Code::RuleInvalid,
       "category 1"},
      {{kStart, kRule},
       violation(ofRule + "dynamic_category_values { key: '5' value: 'x' }"),
       Code::CategoryRefused,
       "\"5\""},
      {{kStart, kRule},
       affirmation(ofRule + "dynamic_category_values { key: 'x' value: 'x' }"),
       Code::CategoryRefused,
       "\"x\""},
      {{kStart, kRule},
       violation(ofRule + "dynamic_category_values { key: '1' value: 'x' }"),
       Code::CategoryRefused,
       "\"1\""},
      {{kStart, kRule},
       violation(ofRule + "dynamic_category_values { key: 'waiver' value: '' }"),
       Code::CategoryRefused,
       "reason"},
      {{kStart, kRule},
       affirmation(ofRule + "dynamic_category_values { key: 'waiver' value: 'r' }"),
       Code::CategoryRefused,
       "\"waiver\""},
  };
}

std::vector<ErrorCase> fileErrors() {
  const std::string file = "data_file { scheme: FILE path: 'r.txt' } ";
  return {
      {{}, load(""), Code::FileAddress, "no data_file"},
      {{}, dump("validate: true"), Code::FileAddress, "no data_file"},
      {{},
       load("data_file { scheme: HTTP path: 'r.txt' }"),
       Code::FileAddress,
       "file on this host"},
      {{},
       dump("data_file { scheme: FILE host: 'h' path: 'r.txt' }"),
       Code::FileAddress,
       "file on this host"},
      {{}, load("data_file { scheme: FILE }"), Code::FileAddress, "file on this host"},
      {{}, dump("data_file { scheme: FILE path: '' }"), Code::FileAddress, "file on this host"},
      {{},
       dump("data_file { scheme: FILE path: '\\0r.txt' }"),
       Code::FileAddress,
       "file on this host"},
      {{kStart}, kWrite, Code::FileAddress, "neither"},
      {{startWith("report_file { scheme: HTTPS path: 'p' }")},
       kWrite,
       Code::FileAddress,
       "file on this host"},
      {{startWith("proto_file { scheme: DATA path: 'p.pb' }")},
       kWrite,
       Code::FileAddress,
       "file on this host"},
      {{}, load(file), Code::FileAccess, "r.txt: cannot be read"},
      {{},
       dump("data_file { scheme: FILE path: '/broken.pb' }"),
       Code::FileAccess,
       "/broken.pb: cannot be written"},
      {{startWith("report_file { scheme: FILE path: '/broken.html' }")},
       kWrite,
       Code::FileAccess,
       "/broken.html: cannot be written"},
      {{}, load("data_file { scheme: FILE path: 'r.xml' }"), Code::FileFormat, "extension"},
      {{}, dump("data_file { scheme: FILE path: 'r' }"), Code::FileFormat, "extension"},
      {{startWith("proto_file { scheme: FILE path: 'p.xml' }")},
       kWrite,
       Code::FileFormat,
       "extension"},
      {{startWith("report_file { scheme: FILE path: 'authorized_keys' }")},
       kWrite,
       Code::FileFormat,
       "authorized_keys: a report has the extension .html or .htm"},
      {{startWith("report_file { scheme: FILE path: 'p.pb' } "
                  "proto_file { scheme: FILE path: 'p.pb' }")},
       kWrite,
       Code::FileFormat,
       "p.pb: a report has the extension"},
      {{}, load("data_file { scheme: FILE path: 'bad.txt' }"), Code::FileFormat, "bad.txt: 1:"},
      {{},
       load("data_file { scheme: FILE path: 'bad.pb' }"),
       Code::FileFormat,
       "bad.pb: malformed"},
      {{}, load("data_file { scheme: FILE path: 'bad.json' }"), Code::FileFormat, "bad.json: "},
      {{}, load("data_file { scheme: FILE path: 'partial.txt' }"), Code::FileFormat, "missing"},
      {{},
       load("data_file { scheme: FILE path: 'invalid.txt' } validate: true"),
       Code::RuleInvalid,
       "stands under the key \"a\""},
      {{},
       load("data_file { scheme: FILE path: 'long.txt' } pattern: 'b' validate: true"),
       Code::RuleInvalid,
       "1 to 255"},
      {{},
       load(file + "pattern: '" + std::string(1001, '*') + "'"),
       Code::SelectionInvalid,
       "more than 1000 bytes"},
      {{},
       dump(file + "regex: '" + std::string(1001, 'a') + "'"),
       Code::SelectionInvalid,
       "more than 1000 bytes"},
      {{}, load(file + "regex: '('"), Code::SelectionInvalid, "\"(\""},
      {{}, dump(file + "regex: '['"), Code::SelectionInvalid, "\"[\""},
      {{}, load(file + "regex: '(?=a)'"), Code::SelectionInvalid, "regex \"(?=a)\""},
      {{}, load(file + "regex: '(a)\\\\1'"), Code::SelectionInvalid, "regex"},
      {{}, load(file + "regex: '((a{100}){100}){100}'"), Code::SelectionInvalid, "regex"},
      {{"type: START_SESSION start_session { name: 'unprintable' uuid: 's'"
        "  report_file { scheme: FILE path: 'r.html' } }"},
       kWrite,
       Code::Internal,
       "no page"},
  };
}

void expectErrors(const std::vector<ErrorCase>& cases) {
  for (const ErrorCase& c : cases) {
    SCOPED_TRACE(c.request);
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
  const std::vector<std::pair<Code, int>> codes = {
      {Code::TypeMissing, 1},     {Code::BodyMismatch, 2},     {Code::BodyMissing, 3},
      {Code::BodyIncomplete, 4},  {Code::ServerStopped, 5},    {Code::TokenRefused, 6},
      {Code::SessionUnknown, 10}, {Code::SessionStopped, 11},  {Code::SessionExists, 12},
      {Code::RuleUnknown, 20},    {Code::RulePlanned, 21},     {Code::RuleReadOnly, 22},
      {Code::RuleInvalid, 23},    {Code::CategoryRefused, 24}, {Code::FileAddress, 30},
      {Code::FileAccess, 31},     {Code::FileFormat, 32},      {Code::SelectionInvalid, 33},
      {Code::Internal, 40},       {Code::LimitExceeded, 41},
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
      EXPECT_EQ(static_cast<int>(Code::BodyMismatch), server.ask(request).error().code())
          << textOf(request);
      reflection->MutableMessage(&request, Request::descriptor()->FindFieldByNumber(bodyOf(type)));
      EXPECT_EQ(static_cast<int>(Code::BodyMismatch), server.ask(request).error().code())
          << textOf(request);
    }
  }
  EXPECT_EQ(15 * 13, pairs);
}

TEST(Errors, OfTypesThatAreNotListed) {
  TestServer server;
  Request request;
  ASSERT_TRUE(request.ParsePartialFromString(fromHex("08 10")));
  EXPECT_EQ(static_cast<int>(Code::TypeMissing), server.ask(request).error().code());
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
