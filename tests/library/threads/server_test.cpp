// SPDX-License-Identifier: Apache-2.0

// The rule server from many threads: no finding is lost, and none is recorded twice.

#include <gtest/gtest.h>

#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

#include "run_at_once.h"
#include "test_server.h"

namespace {

constexpr int kThreads = 8;
constexpr int kRounds = 40;

TEST(Servers, KeepEachFindingOnceWhenManyThreadsReport) {
  tests::TestServer server;
  server.prepare("START_SESSION name: 'n' uuid: 's' report_file @r.html; W");
  const auto report = [&server](const std::string& session, const std::string& mark) {
    return server.ask("CREATE_VIOLATION rule_key: 'W' session_uuid: '" + session +
                      "' args { arg { string_val: '" + mark + "' } }");
  };
  std::mutex mutex;
  std::map<int, std::string> reported;
  tests::runAtOnce(kThreads, [&](int thread) {
    const std::string own = "own-" + std::to_string(thread);
    server.prepare("START_SESSION name: 'n' uuid: '" + own + "'");
    for (int round = 0; round < kRounds; ++round) {
      const std::string mark = own + "-" + std::to_string(round);
      const int id = report("s", mark).violation().id();
      report(own, mark);
      server.prepare("W; DUMP_RULES data_file @r.txtpb regex: 'W'; write; result");
      const std::lock_guard<std::mutex> lock(mutex);
      reported.emplace(id, mark);
    }
  });
  std::map<int, std::string> found;
  const auto shared = server.result();
  for (const auto& [id, violation] : shared.violations().hashmap()) {
    found.emplace(id, violation.details().args().arg(0).string_val());
  }
  EXPECT_EQ(reported, found);
  EXPECT_EQ(kThreads * kRounds, shared.violation_count());
  for (int thread = 0; thread < kThreads; ++thread) {
    EXPECT_EQ(kRounds, server.result("own-" + std::to_string(thread)).violation_count());
  }
}

TEST(Servers, OpenASessionOnceAndStopOnce) {
  tests::TestServer server;
  const auto errorsOf = [&server](const std::string& text) {
    const auto request = tests::requestOf(text);
    return tests::runAtOnce(kThreads, [&](int) {
      const auto response = server.ask(request);
      if (response.has_error()) {
        throw std::runtime_error(response.error().msg());
      }
    });
  };
  EXPECT_EQ(errorsOf("start"),
            std::vector<std::string>(kThreads - 1, "there is a session \"s\" already"));
  EXPECT_EQ(errorsOf("STOP_SERVER token: 'secret'"),
            std::vector<std::string>(kThreads - 1, "the server is stopped"));
  EXPECT_TRUE(server.server.stopped());
}

}  // namespace
