// SPDX-License-Identifier: Apache-2.0

// What each type of request does, what the server refuses, and with which code.

#include <gmock/gmock.h>
#include <google/protobuf/unknown_field_set.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <regex>
#include <string>

#include "support/messages.h"
#include "test_server.h"

namespace tests {
namespace {

using vok::rulecheck::Request;
using vok::rulecheck::Response;

// The requests before, the request and the response.
const std::string kRequests = R"(
start; W | affirmation | type: AFFIRMATION affirmation { id: 1 rule_key: 'W' details { text: 'Widths' } }
start; W | violation | type: VIOLATION violation { id: 1 severity: SEV_UNKNOWN rule_key: 'W' details { text: 'Widths' } }
start; W; violation | GET_RULESPECS session { name: 'any' uuid: 's' } | type: SESSION_RESULT session_result { session { name: 'n' uuid: 's' timestamp: 1000 } specs_violated { hashmap { key: 'W' value { key: 'W' full_name: 'Widths' } } } specs_affirmed { } }
start; stop | GET_SESSION session_uuid: 's' | type: SESSION session { name: 'n' uuid: 's' timestamp: 1000 }
start | result | type: SESSION_RESULT session_result { session { name: 'n' uuid: 's' timestamp: 1000 } violation_count: 0 waived_count: 0 affirmation_count: 0 violations { } waived_violations { } affirmations { } }
start; W; violation; affirmation; reset | result | type: SESSION_RESULT session_result { session { name: 'n' uuid: 's' timestamp: 1000 } violation_count: 0 waived_count: 0 affirmation_count: 0 violations { } waived_violations { } affirmations { } }
start; W; violation; affirmation; reset | affirmation | type: AFFIRMATION affirmation { id: 1 rule_key: 'W' details { text: 'Widths' } }
 | START_SESSION name: 'n' pid: 4711 uuid: 's' description: 'd' proto_file @p report_file @r | type: SESSION session { name: 'n' uuid: 's' description: 'd' timestamp: 1000 report_file { scheme: FILE path: 'r' } proto_file { scheme: FILE path: 'p' } }
 | START_SESSION name: 'n' | type: SESSION session { name: 'n' uuid: 'uuid-1' timestamp: 1000 }
start | START_SESSION name: '' uuid: '' | type: SESSION session { name: '' uuid: 'uuid-1' timestamp: 1001 }
)";

TEST(Requests, AreAnswered) {
  for (const auto& row : rowsOf(kRequests)) {
    SCOPED_TRACE(row.at(0) + " | " + row.at(1));
    TestServer server;
    server.prepare(row.at(0));
    EXPECT_EQ(textOf(parse<Response>(row.at(2))), textOf(server.ask(row.at(1))));
  }
}

// Clients rely on the codes: the requests before, the request, the code and a part of the text.
const std::string kErrors = R"table(
 | EXCHANGE_TOKEN | 4 | missing exchange_token.token
 | UPSERT_RULESPEC rule_spec { key: 'k' full_name: 'f' description { } } | 4 | upsert_rulespec.rule_spec.description.scheme
STOP_SERVER token: 'secret' | GET_VERSION | 5 | stopped
 | EXCHANGE_TOKEN token: 'Secret' | 6 | token
 | EXCHANGE_TOKEN token: '' | 6 | token
 | EXCHANGE_TOKEN token: 'secre' | 6 | token
 | EXCHANGE_TOKEN token: 'secretsecret' | 6 | token
 | EXCHANGE_TOKEN token: 'secret\n' | 6 | token
 | STOP_SERVER token: 'x' | 6 | token
W | CREATE_AFFIRMATION rule_key: 'W' session_uuid: 'x' | 10 | "x"
W | CREATE_VIOLATION rule_key: 'W' | 10 | no session is named
 | GET_RULESPECS session { name: 'n' uuid: 's' } | 10 | "s"
start | GET_RULESPECS | 10 | no session is named
start | GET_SESSION | 10 | no session is named
start | GET_SESSION session_uuid: 'S' | 10 | "S"
 | result | 10 | "s"
start | RESET_SESSION | 10 | no session is named
start | STOP_SESSION session { name: 'n' } | 10 | no session is named
 | write | 10 | "s"
start; W; stop | violation | 11 | stopped
start; W; stop | affirmation | 11 | stopped
start; stop | reset | 11 | stopped
start; stop | stop | 11 | stopped
start | start | 12 | "s"
start; stop | start | 12 | "s"
start | violation | 20 | "W"
start; W | CREATE_AFFIRMATION rule_key: '' session_uuid: 's' | 20 | ""
start; P | CREATE_VIOLATION rule_key: 'P' session_uuid: 's' | 21 | "P"
start; P | CREATE_AFFIRMATION rule_key: 'P' session_uuid: 's' | 21 | "P"
R | UPSERT_RULESPEC rule_spec { key: 'R' full_name: 'x' } | 22 | "R"
 | UPSERT_RULESPEC | 23 | no rule_spec
 | UPSERT_RULESPEC rule_spec { key: '' full_name: 'f' } | 23 | 1 to 255
 | UPSERT_RULESPEC rule_spec { key: 'k' full_name: '' } | 23 | full name
 | UPSERT_RULESPEC rule_spec { key: 'k' full_name: 'f' categories { key: 1 value: 'x' } } | 23 | category 1
 | UPSERT_RULESPEC rule_spec { key: 'k' full_name: 'f' dynamic_categories { key: 1 value: false } } | 23 | category 1
 | LOAD_RULESPEC_FILE data_file @invalid.txt validate: true | 23 | has the key "a" in the file
 | LOAD_RULESPEC_FILE data_file @long.txt pattern: 'b' validate: true | 23 | 1 to 255
start; W | CREATE_VIOLATION rule_key: 'W' session_uuid: 's' dynamic_category_values { key: '5' value: 'x' } | 24 | "5"
start; W | CREATE_VIOLATION rule_key: 'W' session_uuid: 's' dynamic_category_values { key: '1' value: 'x' } | 24 | "1"
start; W | CREATE_VIOLATION rule_key: 'W' session_uuid: 's' dynamic_category_values { key: 'waiver' value: '' } | 24 | reason
start; W | CREATE_AFFIRMATION rule_key: 'W' session_uuid: 's' dynamic_category_values { key: 'x' value: 'x' } | 24 | "x"
start; W | CREATE_AFFIRMATION rule_key: 'W' session_uuid: 's' dynamic_category_values { key: 'waiver' value: 'r' } | 24 | "waiver"
 | LOAD_RULESPEC_FILE | 30 | no data_file
 | DUMP_RULES validate: true | 30 | no data_file
 | LOAD_RULESPEC_FILE data_file { scheme: HTTP path: 'r.txt' } | 30 | file on this host
 | DUMP_RULES data_file { scheme: FILE host: 'h' path: 'r.txt' } | 30 | file on this host
 | LOAD_RULESPEC_FILE data_file { scheme: FILE } | 30 | file on this host
 | DUMP_RULES data_file { scheme: FILE path: '' } | 30 | file on this host
 | DUMP_RULES data_file @\0r.txt | 30 | file on this host
start | write | 30 | neither
START_SESSION name: 'n' uuid: 's' report_file { scheme: HTTPS path: 'p' } | write | 30 | file on this host
START_SESSION name: 'n' uuid: 's' proto_file { scheme: DATA path: 'p.pb' } | write | 30 | file on this host
 | LOAD_RULESPEC_FILE data_file @r.txt | 31 | r.txt: cannot be read
 | DUMP_RULES data_file @/broken.pb | 31 | /broken.pb: cannot be written
START_SESSION name: 'n' uuid: 's' report_file @/broken.html | write | 31 | /broken.html: cannot be written
 | LOAD_RULESPEC_FILE data_file @r.xml | 32 | extension
 | DUMP_RULES data_file @r | 32 | extension
START_SESSION name: 'n' uuid: 's' proto_file @p.xml | write | 32 | extension
START_SESSION name: 'n' uuid: 's' report_file @authorized_keys | write | 32 | authorized_keys: a report has the extension .html or .htm
START_SESSION name: 'n' uuid: 's' report_file @p.pb proto_file @p.pb | write | 32 | p.pb: a report has the extension
 | LOAD_RULESPEC_FILE data_file @bad.txt | 32 | bad.txt: 1:
 | LOAD_RULESPEC_FILE data_file @partial.txt | 32 | missing
 | LOAD_RULESPEC_FILE data_file @r.txt regex: '(' | 33 | "("
 | DUMP_RULES data_file @r.txt regex: '[' | 33 | "["
 | LOAD_RULESPEC_FILE data_file @r.txt regex: '(?=a)' | 33 | regex "(?=a)"
 | LOAD_RULESPEC_FILE data_file @r.txt regex: '(a)\\1' | 33 | regex
 | LOAD_RULESPEC_FILE data_file @r.txt regex: '((a{100}){100}){100}' | 33 | regex
START_SESSION name: 'unprintable' uuid: 's' report_file @r.html | write | 40 | no page
)table";

TEST(Errors, HaveTheirCodesAndOneLineAndChangeNothing) {
  const std::string long_key(256, 'k');
  auto rows = rowsOf(kErrors);
  rows.push_back({"", "UPSERT_RULESPEC rule_spec { key: '" + long_key + "' full_name: 'f' }", "23",
                  "1 to 255"});
  const std::string expression(1001, 'a');
  rows.push_back({"", "LOAD_RULESPEC_FILE data_file @r.txt pattern: '" + expression + "'", "33",
                  "more than 1000 bytes"});
  rows.push_back({"", "DUMP_RULES data_file @r.txt regex: '" + expression + "'", "33",
                  "more than 1000 bytes"});
  for (const auto& row : rows) {
    SCOPED_TRACE(row.at(1));
    TestServer server;
    server.files.contents = {
        {"r.xml", ""},
        {"bad.txt", "hashmap {"},
        {"long.txt", "hashmap { key: '" + long_key + "' value { key: 'k' full_name: 'f' } }"},
        {"partial.txt", "hashmap { key: 'a' value { key: 'a' } }"},
        {"invalid.txt",
         "hashmap { key: 'a' value { key: 'b' full_name: 'f' } }"
         "hashmap { key: 'c' value { key: '' full_name: 'f' } }"}};
    server.prepare(row.at(0));
    const auto contents = server.files.contents;
    const auto before = server.ask("result");
    const auto error = server.ask(row.at(1)).error();
    EXPECT_EQ(row.at(2), std::to_string(error.code())) << error.msg();
    EXPECT_THAT(error.msg(), testing::HasSubstr(row.at(3)));
    EXPECT_EQ(std::string::npos, error.msg().find('\n'));
    EXPECT_EQ(textOf(before), textOf(server.ask("result")));
    EXPECT_EQ(contents, server.files.contents);
  }
}

TEST(Errors, OfTypesThatAreAbsentOrNotListed) {
  TestServer server;
  Request request;
  EXPECT_EQ(1, server.ask(request).error().code());
  request.mutable_get_version();
  EXPECT_EQ(1, server.ask(request).error().code());
  ASSERT_TRUE(request.ParsePartialFromString(fromHex("08 10")));
  EXPECT_EQ(1, server.ask(request).error().code());
}

TEST(Errors, QuoteTextsOnOneLineAndCutThem) {
  TestServer server;
  Request request = requestOf("GET_SESSION session_uuid: 'a\\r\\nb\\0c'");
  EXPECT_EQ("there is no session \"a  b c\"", server.ask(request).error().msg());
  for (const auto& [length, end] :
       {std::pair<std::size_t, const char*>{100, "\""}, {101, "...\""}}) {
    request.mutable_get_session()->set_session_uuid(std::string(length, 'u'));
    EXPECT_EQ("there is no session \"" + std::string(100, 'u') + end,
              server.ask(request).error().msg());
  }
}

// Each type with each body: none, its own, another one, and both.
TEST(Errors, OfBodiesThatDoNotBelongToTheType) {
  const auto* descriptor = Request::descriptor();
  for (int type = Request::CREATE_AFFIRMATION; type <= Request::STOP_SERVER; ++type) {
    const std::string name = Request::RequestType_Name(type);
    const Request own = requestOf(name + " ");
    Request empty;
    empty.set_type(own.type());
    TestServer server;
    EXPECT_EQ(3, server.ask(empty).error().code()) << name;
    for (int i = 0; i < descriptor->field_count(); ++i) {
      const auto* body = descriptor->field(i);
      if (body->number() == Request::kTypeFieldNumber || own.GetReflection()->HasField(own, body)) {
        continue;
      }
      for (Request request : {empty, own}) {
        request.GetReflection()->MutableMessage(&request, body);
        const auto error = server.ask(request).error();
        EXPECT_EQ(2, error.code()) << textOf(request);
        EXPECT_EQ(name + " does not go with the body " + body->name(), error.msg());
      }
    }
  }
}

TEST(Requests, MayHaveUnknownFields) {
  TestServer server;
  Request request = requestOf("GET_VERSION ");
  auto* unknown = request.GetReflection()->MutableUnknownFields(&request);
  unknown->AddVarint(1000, 1);
  unknown->AddLengthDelimited(1001, "\xff\xfe");
  EXPECT_EQ(Response::VERSION, server.ask(request).type());
}

// The addresses in the request have no effect.
TEST(Reports, AreWrittenToTheAddressesOfTheSession) {
  TestServer server;
  server.prepare(
      "START_SESSION name: 'n' uuid: 's' report_file @/r.html"
      " proto_file { scheme: FILE host: 'localhost' path: '/p.pb' }; W; violation; stop; "
      "WRITE_REPORT session { name: '' uuid: 's' report_file { scheme: HTTP } }");
  EXPECT_EQ("page of n", server.files.contents["/r.html"]);
  EXPECT_EQ(bytesOf(server.result()), server.files.contents["/p.pb"]);
}

TEST(Servers, AreStoppedOnlyByTheirToken) {
  TestServer server;
  EXPECT_EQ("6", server.outcome("STOP_SERVER token: 'guess'"));
  EXPECT_FALSE(server.server.stopped());
  server.prepare("STOP_SERVER token: 'secret'");
  EXPECT_TRUE(server.server.stopped());
  rule_server::Server without{rule_server::Environment()};
  EXPECT_EQ(6, without.handle(requestOf("STOP_SERVER token: ''")).error().code());
  EXPECT_FALSE(without.stopped());
}

TEST(Servers, WithoutFilesRefuseRequestsThatNameThem) {
  rule_server::Server server{rule_server::Environment()};
  for (const char* const request :
       {"START_SESSION name: 'n' report_file @r.html", "START_SESSION name: 'n' proto_file @r.pb",
        "LOAD_RULESPEC_FILE data_file @r.txt", "DUMP_RULES data_file @r.txt"}) {
    EXPECT_EQ(31, server.handle(requestOf(request)).error().code()) << request;
  }
}

using Clock = std::chrono::steady_clock;

Clock::duration fastestRefusal(rule_server::Server& server, const std::string& guess) {
  Request request = requestOf("EXCHANGE_TOKEN");
  request.mutable_exchange_token()->set_token(guess);
  Clock::duration fastest = Clock::duration::max();
  for (int i = 0; i < 20; ++i) {
    const auto start = Clock::now();
    EXPECT_EQ(6, server.handle(request).error().code());
    fastest = std::min(fastest, Clock::now() - start);
  }
  return fastest;
}

TEST(Tokens, AreRefusedInTheSameTimeWhereverTheyAreWrong) {
  rule_server::Environment environment;
  environment.token = std::string(4U << 20U, 'x');
  rule_server::Server server(environment);
  const auto first = fastestRefusal(server, 'y' + environment.token.substr(1));
  const auto last = fastestRefusal(server, environment.token.substr(1) + 'y');
  EXPECT_LT(first, 5 * last);
  EXPECT_LT(last, 5 * first);
}

TEST(Environment, MakesUuidsOfTheRandomForm) {
  const std::string uuid = rule_server::randomUuid();
  EXPECT_TRUE(std::regex_match(
      uuid, std::regex("[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}")))
      << uuid;
  EXPECT_NE(uuid, rule_server::randomUuid());
}

}  // namespace
}  // namespace tests
