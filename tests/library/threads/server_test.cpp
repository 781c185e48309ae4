// SPDX-License-Identifier: Apache-2.0

// The rule server from many threads: no finding is lost, and none is recorded twice.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

#include "fake_environment.h"
#include "rule_server/rule_server.h"
#include "run_at_once.h"
#include "support/messages.h"

namespace {

using vok::rulecheck::Request;
using vok::rulecheck::Response;

constexpr int kThreads = 8;
constexpr int kRounds = 40;

class Servers : public testing::Test {
 protected:
  Response ask(const std::string& request) {
    Response response = server.handle(tests::parse<Request>(request));
    if (response.type() == Response::ERROR_RESPONSE) {
      throw std::runtime_error(response.error().msg());
    }
    return response;
  }

  void start(const std::string& session) {
    ask("type: START_SESSION start_session { name: 'n' uuid: '" + session +
        "' report_file { scheme: FILE path: 'r.html' } }");
  }

  void setRule() {
    ask("type: UPSERT_RULESPEC upsert_rulespec { rule_spec { key: 'W' full_name: 'Widths' } }");
  }

  int report(const std::string& session, const std::string& mark) {
    return ask("type: CREATE_VIOLATION create_violation { rule_key: 'W' session_uuid: '" + session +
               "' args { arg { string_val: '" + mark + "' } } }")
        .violation()
        .id();
  }

  vok::rulecheck::SessionResult resultOf(const std::string& session) {
    return ask("type: GET_SESSION_RESULT get_session_result { session_uuid: '" + session + "' }")
        .session_result();
  }

  tests::FakeEnvironment environment;
  rule_server::Server server{environment.environment()};
};

TEST_F(Servers, KeepEachFindingOnceWhenManyThreadsReport) {
  start("shared");
  setRule();
  std::mutex mutex;
  std::map<int, std::string> reported;
  const auto failures = tests::runAtOnce(kThreads, [&](int thread) {
    const std::string own = "own-" + std::to_string(thread);
    start(own);
    for (int round = 0; round < kRounds; ++round) {
      const std::string mark = own + "-" + std::to_string(round);
      const int id = report("shared", mark);
      report(own, mark);
      setRule();
      ask("type: DUMP_RULES dump_rules { data_file { scheme: FILE path: 'r.txtpb' } regex: 'W' }");
      ask("type: WRITE_REPORT write_report { session { name: '' uuid: 'shared' } }");
      resultOf("shared");
      const std::lock_guard<std::mutex> lock(mutex);
      reported.emplace(id, mark);
    }
  });
  EXPECT_THAT(failures, testing::IsEmpty());
  std::map<int, std::string> found;
  const auto shared = resultOf("shared");
  for (const auto& entry : shared.violations().hashmap()) {
    found.emplace(entry.first, entry.second.details().args().arg(0).string_val());
  }
  EXPECT_EQ(reported, found);
  EXPECT_EQ(kThreads * kRounds, shared.violation_count());
  for (int thread = 0; thread < kThreads; ++thread) {
    EXPECT_EQ(kRounds, resultOf("own-" + std::to_string(thread)).violation_count());
  }
}

TEST_F(Servers, OpenASessionOnceAndStopOnce) {
  EXPECT_EQ(tests::runAtOnce(kThreads, [&](int) { start("wanted"); }),
            std::vector<std::string>(kThreads - 1, "there is a session \"wanted\" already"));
  const auto stop = [&](int) { ask("type: STOP_SERVER exchange_token { token: 'secret' }"); };
  EXPECT_EQ(tests::runAtOnce(kThreads, stop),
            std::vector<std::string>(kThreads - 1, "the server is stopped"));
  EXPECT_TRUE(server.stopped());
}

}  // namespace
