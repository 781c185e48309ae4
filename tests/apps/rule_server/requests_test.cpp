// SPDX-License-Identifier: Apache-2.0

// What each type of request does when it succeeds.

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
 | EXCHANGE_TOKEN token: 'secret' | type: STATUS_RESPONSE status { code: 0 msg: 'token accepted' }
start; W; violation | GET_RULESPECS session { name: 'any' uuid: 's' } | type: SESSION_RESULT session_result { session { name: 'n' uuid: 's' timestamp: 1000 } specs_violated { hashmap { key: 'W' value { key: 'W' full_name: 'Widths' } } } specs_affirmed { } }
start | GET_SESSION session_uuid: 's' | type: SESSION session { name: 'n' uuid: 's' timestamp: 1000 }
start; stop | GET_SESSION session_uuid: 's' | type: SESSION session { name: 'n' uuid: 's' timestamp: 1000 }
start | result | type: SESSION_RESULT session_result { session { name: 'n' uuid: 's' timestamp: 1000 } violation_count: 0 waived_count: 0 affirmation_count: 0 violations { } waived_violations { } affirmations { } }
 | GET_VERSION | type: VERSION version { major: 1 minor: 4 patch: 0 }
start; W; violation | reset | type: STATUS_RESPONSE status { code: 0 msg: 'session reset' }
start; W; violation; affirmation; reset | result | type: SESSION_RESULT session_result { session { name: 'n' uuid: 's' timestamp: 1000 } violation_count: 0 waived_count: 0 affirmation_count: 0 violations { } waived_violations { } affirmations { } }
start; W; violation; affirmation; reset | affirmation | type: AFFIRMATION affirmation { id: 1 rule_key: 'W' details { text: 'Widths' } }
 | START_SESSION name: 'n' pid: 4711 uuid: 's' description: 'd' proto_file @p report_file @r | type: SESSION session { name: 'n' uuid: 's' description: 'd' timestamp: 1000 report_file { scheme: FILE path: 'r' } proto_file { scheme: FILE path: 'p' } }
 | START_SESSION name: 'n' | type: SESSION session { name: 'n' uuid: 'uuid-1' timestamp: 1000 }
start | START_SESSION name: '' uuid: '' | type: SESSION session { name: '' uuid: 'uuid-1' timestamp: 1001 }
start | stop | type: STATUS_RESPONSE status { code: 0 msg: 'session stopped' }
 | W | type: STATUS_RESPONSE status { code: 0 msg: 'rule stored' }
 | STOP_SERVER token: 'secret' | type: STATUS_RESPONSE status { code: 0 msg: 'server stopped' }
)";

TEST(Requests, AreAnswered) {
  for (const auto& row : rowsOf(kRequests)) {
    SCOPED_TRACE(row.at(0) + " | " + row.at(1));
    TestServer server;
    server.prepare(row.at(0));
    EXPECT_EQ(textOf(parse<Response>(row.at(2))), textOf(server.ask(row.at(1))));
  }
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
