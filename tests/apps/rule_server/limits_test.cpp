// SPDX-License-Identifier: Apache-2.0

// What exceeds a limit is refused, and what is recorded stays.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <new>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "rule_server/findings.h"
#include "support/allocations.h"
#include "support/messages.h"
#include "test_server.h"

namespace tests {
namespace {

using rule_server::Finding;
using rule_server::Limits;
using vok::rulecheck::CreateViolation;
using vok::rulecheck::Request;
using vok::rulecheck::RuleSpec;
using vok::rulecheck::Session;

std::string rule(const std::string& key, std::size_t length) {
  return "UPSERT_RULESPEC rule_spec { key: '" + key + "' full_name: '" + std::string(length, 'f') +
         "' }";
}

std::string finding(std::size_t length) {
  return "CREATE_VIOLATION rule_key: 'W' session_uuid: 's' args { arg { string_val: '" +
         std::string(length, 'x') + "' } }";
}

Limits with(std::size_t Limits::*limit, std::size_t value) {
  Limits limits;
  limits.*limit = value;
  return limits;
}

struct LimitCase {
  Limits limits;
  std::string before;
  std::string request;
  // Parts of the text.
  const char* what;
  const char* advice;
  int findings;
};

TEST(Limits, AreKeptAndNothingIsLost) {
  const std::string start = "START_SESSION name: 'n' uuid: 's' ";
  const Limits session = with(&Limits::sessionBytes, 10000);
  const Limits text = with(&Limits::textBytes, 10000);
  const std::string full = "; W; " + finding(10000);
  const LimitCase cases[] = {
      {with(&Limits::ruleBytes, 10000), "start", rule("R", 10000), "rule \"R\" takes", "shorten",
       0},
      {with(&Limits::rules, 1), "start; W", rule("R", 1), "at most 1 rules", "replace some", 0},
      {with(&Limits::sessions, 1), "start", "START_SESSION name: 'n'", "1 sessions",
       "reset one that is not stopped and use it again", 0},
      {with(&Limits::findings, 2), "start; W; violation; violation", "violation",
       "session \"s\" has 2 findings", "start another session", 2},
      {session, "start; W; violation", finding(10000), "session \"s\" with this finding takes",
       "start another session", 1},
      {session, "start", "START_SESSION uuid: 't' name: '" + std::string(10000, 'n') + "'",
       "session \"t\" takes", "shorten it", 0},
      {session, "start; W; violation; " + rule("W", 10000), "result", "the result takes",
       "replace them by shorter ones", 1},
      {with(&Limits::bytes, 10000), "start; W; violation", finding(10000),
       "what the server records takes", "reset sessions", 1},
      {text, start + "report_file @r.html" + full, "write", "r.html takes", ".pb", 1},
      {text, start + "proto_file @r.json" + full, "write", "r.json takes", ".pb", 1},
      {text, "start; " + rule("W", 10000), "DUMP_RULES data_file @r.txt", "r.txt takes", ".pb", 0},
  };
  for (const LimitCase& c : cases) {
    SCOPED_TRACE(c.what);
    TestServer server(c.limits);
    server.prepare(c.before);
    for (int times = 0; times < 2; ++times) {
      const auto error = server.ask(c.request).error();
      EXPECT_EQ(41, error.code()) << error.msg();
      EXPECT_THAT(error.msg(),
                  testing::AllOf(testing::HasSubstr(c.what), testing::HasSubstr(c.advice)));
    }
    EXPECT_TRUE(server.files.contents.empty());
    server.ask("W");  // the rule may have grown
    EXPECT_EQ(c.findings, server.result().violation_count());
  }
}

TEST(Limits, CountDiscardedBytesNoLonger) {
  TestServer server(with(&Limits::bytes, 100000));
  server.prepare("start; W");
  for (int round = 0; round < 100; ++round) {
    server.prepare(rule("R", 20000) + "; " + finding(20000) + "; reset");
  }
}

// A rule that was replaced is kept while findings refer to it.
TEST(Limits, CountReplacedRules) {
  TestServer server(with(&Limits::bytes, 100000));
  server.prepare("start");
  int recorded = 0;
  while (recorded < 1000 && server.ask(rule("W", 10000)).has_status() &&
         server.ask("violation").has_violation()) {
    ++recorded;
  }
  EXPECT_GT(recorded, 5);
  EXPECT_LT(recorded, 10);
  EXPECT_EQ(recorded, server.result().violation_count());
}

TEST(Limits, CountNoFindingForWhichMemoryIsLacking) {
  const Limits limits;
  rule_server::Budget budget(limits.bytes);
  rule_server::SessionState state(parse<Session>("name: 'n' uuid: 's'"), limits, budget);
  const std::size_t empty = state.bytes;
  auto body = parse<CreateViolation>("rule_key: 'R' session_uuid: 's'");
  const auto rule = rule_server::makeRule(
      "R", parse<RuleSpec>("key: 'R' full_name: '" + std::string(100, 'f') + "'"), limits, budget);
  std::size_t failures = 0;
  for (bool failed = true; failed; ++failures) {
    Finding finding = makeFinding(rule, "", rule_server::makeViolation(rule->spec, &body), budget);
    const FailingAllocation failing(failures);
    try {
      EXPECT_EQ(1, state.add(std::move(finding), limits));
    } catch (const std::bad_alloc&) {
      EXPECT_EQ(empty, state.bytes) << failures;
      EXPECT_EQ(0U, state.findings.size() + state.violated.size()) << failures;
    }
    failed = failing.failed();
  }
  EXPECT_GT(failures, 3U);
  EXPECT_EQ(1U, state.violated.count("R"));
}

TEST(Limits, ReplaceAllRulesOrNoneIfMemoryIsLacking) {
  const Limits limits;
  rule_server::Budget budget(limits.bytes);
  const auto rules = [&](const std::string& keys) {
    std::vector<rule_server::Rule> made;
    for (const char key : keys) {
      const std::string name(1, key);
      made.push_back(rule_server::makeRule(
          name, parse<RuleSpec>("key: '" + name + "' full_name: '" + keys + "'"), limits, budget));
    }
    return made;
  };
  std::size_t failures = 0;
  for (bool failed = true; failed; ++failures) {
    rule_server::Catalog catalog;
    auto old = rules("AC");
    catalog.put(&old, limits);
    auto given = rules("ABCD");
    const FailingAllocation failing(failures);
    try {
      catalog.put(&given, limits);
    } catch (const std::bad_alloc&) {
      EXPECT_EQ(2U, catalog.all().size()) << failures;
    }
    failed = failing.failed();
    EXPECT_EQ(failed ? "AC" : "ABCD", catalog.at("A")->spec.full_name()) << failures;
    EXPECT_EQ(failed ? "AC" : "ABCD", catalog.at("C")->spec.full_name()) << failures;
  }
  EXPECT_GT(failures, 2U);
}

TEST(Limits, AreExceededIfMemoryIsLacking) {
  TestServer server;
  server.prepare("start; W; " + finding(1000000));
  vok::rulecheck::Response response;
  {
    const AllocationLimit limit(100000);
    response = server.server.handle(requestOf("result"));
  }
  EXPECT_EQ(41, response.error().code());
  EXPECT_EQ(1, server.result().violation_count());
}

using Clock = std::chrono::steady_clock;

Clock::duration timeOf(TestServer& server, const Request& request) {
  const auto start = Clock::now();
  EXPECT_FALSE(server.server.handle(request).has_error());
  return Clock::now() - start;
}

// Others wait for milliseconds. A result made under the lock would keep them for a second, and so
// would the first large allocation under it after malloc has kept what is freed in small pieces.
TEST(Limits, LetOthersWorkDuringLongRequests) {
  TestServer server;
  server.prepare("start; W; START_SESSION name: 'n' uuid: 'other'");
  const Request others = requestOf("CREATE_VIOLATION rule_key: 'W' session_uuid: 'other'");
  const auto record = [&server, own = requestOf(finding(20))](int count) {
    for (int i = 0; i < count; ++i) {
      timeOf(server, own);
    }
  };
  record(200'000);
  EXPECT_TRUE(server.server.takesLong(requestOf("result")));
  Clock::duration took{};
  for (const char* const request : {"result", "result", "reset"}) {
    SCOPED_TRACE(request);
    std::atomic<bool> done{false};
    std::vector<Clock::duration> waits;
    std::thread other([&] {
      while (!done) {
        waits.push_back(timeOf(server, others));
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
      }
    });
    took = std::max(took, timeOf(server, requestOf(request)));
    record(1000);
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    done = true;
    other.join();
    EXPECT_GT(waits.size(), 10U);
    EXPECT_LT(*std::max_element(waits.begin(), waits.end()), took / 8);
  }
}

}  // namespace
}  // namespace tests
