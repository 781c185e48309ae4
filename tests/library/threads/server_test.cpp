// SPDX-License-Identifier: Apache-2.0

// The rule server from many threads: no finding is lost, none is there twice.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <cstddef>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "fake_environment.h"
#include "rule_server/rule_server.h"
#include "run_at_once.h"
#include "support/messages.h"

namespace {

using tests::parse;
using vok::rulecheck::Request;
using vok::rulecheck::Response;
using vok::rulecheck::SessionResult;

constexpr int kThreads = 8;
constexpr int kRounds = 40;

Request finding(const std::string& session, const std::string& mark) {
  auto request = parse<Request>("type: CREATE_VIOLATION create_violation { rule_key: 'W' }");
  request.mutable_create_violation()->set_session_uuid(session);
  request.mutable_create_violation()->mutable_args()->add_arg()->set_string_val(mark);
  return request;
}

Request start(const std::string& session) {
  auto request = parse<Request>(
      "type: START_SESSION start_session { name: 'n' report_file { scheme: FILE path: 'r.html' } "
      "}");
  request.mutable_start_session()->set_uuid(session);
  return request;
}

Response ask(rule_server::Server& server, const Request& request) {
  Response response = server.handle(request);
  if (response.type() == Response::ERROR_RESPONSE) {
    throw std::runtime_error(response.error().msg());
  }
  return response;
}

SessionResult resultOf(rule_server::Server& server, const std::string& session) {
  auto request = parse<Request>("type: GET_SESSION_RESULT get_session_result { }");
  request.mutable_get_session_result()->set_session_uuid(session);
  return ask(server, request).session_result();
}

// What a thread reports to two sessions, and what else it asks for in between.
void work(rule_server::Server& server, int thread, std::map<int, std::string>* acknowledged) {
  const std::string own = "own-" + std::to_string(thread);
  ask(server, start(own));
  for (int round = 0; round < kRounds; ++round) {
    const std::string mark = own + "-" + std::to_string(round);
    const int id = ask(server, finding("shared", mark)).violation().id();
    acknowledged->emplace(id, mark);
    ask(server, finding(own, mark));
    ask(server, parse<Request>("type: UPSERT_RULESPEC upsert_rulespec {"
                               "  rule_spec { key: 'W' full_name: 'Widths' } }"));
    ask(server, parse<Request>("type: DUMP_RULES dump_rules {"
                               "  data_file { scheme: FILE path: 'r.txtpb' } regex: '[A-Z]' }"));
    ask(server, parse<Request>("type: WRITE_REPORT write_report {"
                               "  session { name: '' uuid: 'shared' } }"));
    resultOf(server, "shared");
    EXPECT_FALSE(server.stopped());
  }
}

class Servers : public testing::Test {
 protected:
  void SetUp() override {
    ask(server, start("shared"));
    ask(server, parse<Request>("type: UPSERT_RULESPEC upsert_rulespec {"
                               "  rule_spec { key: 'W' full_name: 'Widths' } }"));
  }

  tests::FakeEnvironment environment;
  rule_server::Server server{environment.environment()};
};

TEST_F(Servers, KeepEachFindingOnceWhenManyThreadsReport) {
  std::vector<std::map<int, std::string>> acknowledged(kThreads);
  EXPECT_THAT(tests::runAtOnce(kThreads,
                               [&](int thread) {
                                 work(server, thread,
                                      &acknowledged[static_cast<std::size_t>(thread)]);
                               }),
              testing::IsEmpty());
  std::map<int, std::string> expected;
  for (const auto& of : acknowledged) {
    expected.insert(of.begin(), of.end());
  }
  std::map<int, std::string> found;
  const SessionResult shared = resultOf(server, "shared");
  for (const auto& entry : shared.violations().hashmap()) {
    found.emplace(entry.first, entry.second.details().args().arg(0).string_val());
  }
  EXPECT_EQ(expected, found);
  EXPECT_EQ(kThreads * kRounds, shared.violation_count());
  for (int thread = 0; thread < kThreads; ++thread) {
    EXPECT_EQ(kRounds, resultOf(server, "own-" + std::to_string(thread)).violation_count());
  }
}

TEST_F(Servers, OpenASessionOnceWhenManyThreadsAskForIt) {
  const auto failures = tests::runAtOnce(kThreads, [&](int) { ask(server, start("wanted")); });
  EXPECT_EQ(std::vector<std::string>(kThreads - 1, "there is a session \"wanted\" already"),
            failures);
}

TEST_F(Servers, StopOnceAndRefuseAllThatComesLater) {
  const auto failures = tests::runAtOnce(kThreads, [&](int) {
    ask(server, parse<Request>("type: STOP_SERVER exchange_token { token: 'secret' }"));
  });
  EXPECT_EQ(std::vector<std::string>(kThreads - 1, "the server is stopped"), failures);
  EXPECT_TRUE(server.stopped());
}

}  // namespace
