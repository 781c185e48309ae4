// SPDX-License-Identifier: Apache-2.0

// What each type of request does when all is well.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/messages.h"
#include "test_server.h"

namespace tests {
namespace {

using vok::rulecheck::Request;
using vok::rulecheck::Response;

struct RequestCase {
  const char* name;
  std::vector<std::string> before;
  const char* request;
  const char* response;
};

const char* const kViolation =
    "type: CREATE_VIOLATION create_violation { rule_key: 'W' session_uuid: 's' }";
const char* const kAffirmation =
    "type: CREATE_AFFIRMATION create_affirmation { rule_key: 'W' session_uuid: 's' }";

const RequestCase requestCases[] = {
    {"an affirmation is recorded and returned",
     {kStart, kRule},
     kAffirmation,
     "type: AFFIRMATION affirmation { id: 1 rule_key: 'W' details { text: 'Widths' } }"},
    {"a violation is recorded and returned",
     {kStart, kRule},
     kViolation,
     "type: VIOLATION violation {"
     "  id: 1 severity: SEV_UNKNOWN rule_key: 'W' details { text: 'Widths' } }"},
    {"a token is accepted",
     {},
     "type: EXCHANGE_TOKEN exchange_token { token: 'secret' }",
     "type: STATUS_RESPONSE status { code: 0 msg: 'token accepted' }"},
    {"specifications come back in a session's result",
     {kStart, kRule, kViolation},
     "type: GET_RULESPECS get_rulespecs { session { name: 'any' uuid: 's' } }",
     "type: SESSION_RESULT session_result {"
     "  session { name: 'n' uuid: 's' timestamp: 1000 }"
     "  specs_violated { hashmap { key: 'W' value { key: 'W' full_name: 'Widths' } } }"
     "  specs_affirmed { } }"},
    {"a session is returned",
     {kStart},
     "type: GET_SESSION get_session { session_uuid: 's' }",
     "type: SESSION session { name: 'n' uuid: 's' timestamp: 1000 }"},
    {"a result without findings has counts of 0 and empty maps",
     {kStart},
     "type: GET_SESSION_RESULT get_session_result { session_uuid: 's' }",
     "type: SESSION_RESULT session_result {"
     "  session { name: 'n' uuid: 's' timestamp: 1000 }"
     "  violation_count: 0 waived_count: 0 affirmation_count: 0"
     "  violations { } waived_violations { } affirmations { } }"},
    {"the version is 1.4.0",
     {},
     "type: GET_VERSION get_version { }",
     "type: VERSION version { major: 1 minor: 4 patch: 0 }"},
    {"a session can be reset",
     {kStart, kRule, kViolation},
     "type: RESET_SESSION reset_session { session { name: '' uuid: 's' } }",
     "type: STATUS_RESPONSE status { code: 0 msg: 'session reset' }"},
    {"a session is started under the uuid asked for, and its pid is not kept",
     {},
     "type: START_SESSION start_session { name: 'n' pid: 4711 uuid: 's' description: 'd'"
     "  proto_file { scheme: FILE path: 'p' } report_file { scheme: FILE path: 'r' } }",
     "type: SESSION session { name: 'n' uuid: 's' description: 'd' timestamp: 1000"
     "  report_file { scheme: FILE path: 'r' } proto_file { scheme: FILE path: 'p' } }"},
    {"a session without a uuid gets one",
     {},
     "type: START_SESSION start_session { name: 'n' }",
     "type: SESSION session { name: 'n' uuid: 'uuid-1' timestamp: 1000 }"},
    {"a session with an empty uuid gets one, and the time when it starts",
     {kStart},
     "type: START_SESSION start_session { name: '' uuid: '' }",
     "type: SESSION session { name: '' uuid: 'uuid-1' timestamp: 1001 }"},
    {"a session is stopped",
     {kStart},
     kStop,
     "type: STATUS_RESPONSE status { code: 0 msg: 'session stopped' }"},
    {"a stopped session is still returned",
     {kStart, kStop},
     "type: GET_SESSION get_session { session_uuid: 's' }",
     "type: SESSION session { name: 'n' uuid: 's' timestamp: 1000 }"},
    {"a rule is stored", {}, kRule, "type: STATUS_RESPONSE status { code: 0 msg: 'rule stored' }"},
    {"the server is stopped by its token",
     {},
     "type: STOP_SERVER exchange_token { token: 'secret' }",
     "type: STATUS_RESPONSE status { code: 0 msg: 'server stopped' }"},
};

TEST(Requests, AreAnswered) {
  for (const RequestCase& c : requestCases) {
    SCOPED_TRACE(c.name);
    TestServer server;
    server.prepare(c.before);
    EXPECT_EQ(textOf(parse<Response>(c.response)), textOf(server.ask(c.request)));
  }
}

TEST(Reset, DiscardsFindingsAndNumbersAndKeepsTheSession) {
  TestServer server;
  server.prepare({kStart, kRule, kViolation, kAffirmation,
                  "type: RESET_SESSION reset_session { session { name: '' uuid: 's' } }"});
  const auto result = server.result();
  EXPECT_EQ(0, result.violation_count() + result.waived_count() + result.affirmation_count());
  EXPECT_FALSE(result.has_specs_violated());
  EXPECT_FALSE(result.has_specs_affirmed());
  EXPECT_EQ(textOf(parse<vok::rulecheck::Session>("name: 'n' uuid: 's' timestamp: 1000")),
            textOf(result.session()));
  EXPECT_EQ(1, server.ask(kViolation).violation().id());
}

TEST(Report, GoesToTheAddressesThatTheSessionHas) {
  TestServer server;
  server.prepare({kRule,
                  "type: START_SESSION start_session { name: 'n' uuid: 's'"
                  "  report_file { scheme: FILE path: '/r.html' }"
                  "  proto_file { scheme: FILE host: 'localhost' path: '/p.pb' } }",
                  kViolation,
                  // The addresses in the request do not count.
                  "type: WRITE_REPORT write_report {"
                  "  session { name: '' uuid: 's' report_file { scheme: HTTP } } }"});
  EXPECT_EQ("page of n", server.files.contents["/r.html"]);
  EXPECT_EQ(bytesOf(server.result()), server.files.contents["/p.pb"]);
}

TEST(Report, OfAStoppedSessionIsWritten) {
  TestServer server;
  server.prepare(
      {"type: START_SESSION start_session { name: 'n' uuid: 's'"
       "  report_file { scheme: FILE path: 'r.html' } }",
       kStop, "type: WRITE_REPORT write_report { session { name: '' uuid: 's' } }"});
  EXPECT_EQ(1u, server.files.contents.count("r.html"));
}

TEST(Server, IsStoppedOnlyByItsToken) {
  TestServer server;
  server.ask("type: STOP_SERVER exchange_token { token: 'guess' }");
  EXPECT_FALSE(server.server.stopped());
  server.ask("type: STOP_SERVER exchange_token { token: 'secret' }");
  EXPECT_TRUE(server.server.stopped());
}

TEST(Server, WithoutATokenIsNotStopped) {
  MemoryFiles files;
  rule_server::Environment environment;
  environment.files = &files;
  rule_server::Server server(environment);
  const auto response =
      server.handle(parse<Request>("type: STOP_SERVER exchange_token { token: '' }"));
  EXPECT_EQ(Response::ERROR_RESPONSE, response.type());
  EXPECT_FALSE(server.stopped());
}

TEST(Environment, MakesUuidsOfTheRandomForm) {
  const std::string uuid = rule_server::randomUuid();
  ASSERT_EQ(36u, uuid.size()) << uuid;
  for (std::size_t i = 0; i < uuid.size(); ++i) {
    const bool isDash = i == 8 || i == 13 || i == 18 || i == 23;
    EXPECT_EQ(isDash, uuid[i] == '-') << uuid;
    EXPECT_NE(std::string::npos, std::string("-0123456789abcdef").find(uuid[i])) << uuid;
  }
  EXPECT_EQ('4', uuid[14]) << uuid;
  EXPECT_NE(std::string::npos, std::string("89ab").find(uuid[19])) << uuid;
  EXPECT_NE(uuid, rule_server::randomUuid());
}

}  // namespace
}  // namespace tests
