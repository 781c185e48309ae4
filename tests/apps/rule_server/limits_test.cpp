// SPDX-License-Identifier: Apache-2.0

// What the server doesn't take, and that it keeps what it has.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <new>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "rule_server/errors.h"
#include "rule_server/findings.h"
#include "support/messages.h"
#include "test_server.h"

namespace {

// Which of this thread's next allocations fails, or none if it is negative.
thread_local int failingAllocation = -1;

}  // namespace

void* operator new(std::size_t size) {
  const bool fails = failingAllocation >= 0 && failingAllocation-- == 0;
  void* const block = fails ? nullptr : std::malloc(size);
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  return block;
}

// AddressSanitizer has one of its own, whose memory free() must not get.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return std::malloc(size);
}

// Inlined, GCC takes the call of free() for a mistake.
[[gnu::noinline]] void operator delete(void* block) noexcept {
  std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
  operator delete(block);
}

namespace tests {
namespace {

using rule_server::ErrorCode;
using rule_server::Finding;
using rule_server::Limits;
using vok::rulecheck::CreateViolation;
using vok::rulecheck::Request;
using vok::rulecheck::Response;
using vok::rulecheck::RuleSpec;
using vok::rulecheck::Session;

const char* const kFinding =
    "type: CREATE_VIOLATION create_violation { rule_key: 'W' session_uuid: 's' }";
const char* const kResult = "type: GET_SESSION_RESULT get_session_result { session_uuid: 's' }";

std::string rule(const std::string& key, std::size_t length) {
  return "type: UPSERT_RULESPEC upsert_rulespec { rule_spec { key: '" + key + "' full_name: '" +
         std::string(length, 'f') + "' } }";
}

std::string finding(std::size_t length) {
  return "type: CREATE_VIOLATION create_violation { rule_key: 'W' session_uuid: 's'"
         "  args { arg { string_val: '" +
         std::string(length, 'x') + "' } } }";
}

Limits with(std::size_t Limits::*limit, std::size_t value) {
  Limits limits;
  limits.*limit = value;
  return limits;
}

struct LimitCase {
  const char* name;
  Limits limits;
  std::vector<std::string> before;
  std::string request;
  // Parts of the text.
  const char* what;
  const char* advice;
};

std::vector<LimitCase> limitCases() {
  const std::string page =
      "type: START_SESSION start_session { name: 'n' uuid: 's'"
      "  report_file { scheme: FILE path: 'r.html' } }";
  const std::string json =
      "type: START_SESSION start_session { name: 'n' uuid: 's'"
      "  proto_file { scheme: FILE path: 'r.json' } }";
  const std::string write = "type: WRITE_REPORT write_report { session { name: '' uuid: 's' } }";
  return {
      {"bytes of a rule",
       with(&Limits::ruleBytes, 10000),
       {},
       rule("R", 10000),
       "rule \"R\" takes",
       "shorten it"},
      {"rules", with(&Limits::rules, 1), {kRule}, rule("R", 1), "at most 1 rules", "replace some"},
      {"sessions",
       with(&Limits::sessions, 1),
       {kStart},
       "type: START_SESSION start_session { name: 'n' }",
       "1 sessions",
       "reset one that is not stopped and use it again"},
      {"findings",
       with(&Limits::findings, 2),
       {kStart, kRule, kFinding, kFinding},
       kFinding,
       "session \"s\" has 2 findings",
       "start another session"},
      {"bytes of a session",
       with(&Limits::sessionBytes, 10000),
       {kStart, kRule, kFinding},
       finding(10000),
       "session \"s\" with this finding takes",
       "start another session"},
      {"bytes of the description of a session",
       with(&Limits::sessionBytes, 10000),
       {},
       "type: START_SESSION start_session { name: '" + std::string(10000, 'n') + "' uuid: 's' }",
       "session \"s\" takes",
       "shorten it"},
      {"bytes of a result whose rules have grown",
       with(&Limits::sessionBytes, 10000),
       {kStart, kRule, kFinding, rule("W", 10000)},
       kResult,
       "the result takes",
       "replace them by shorter ones"},
      {"bytes in all",
       with(&Limits::bytes, 10000),
       {kStart, kRule, kFinding},
       finding(10000),
       "what the server records takes",
       "reset sessions"},
      {"bytes of a page",
       with(&Limits::textBytes, 10000),
       {page, kRule, finding(10000)},
       write,
       "r.html takes",
       ".pb"},
      {"bytes of JSON",
       with(&Limits::textBytes, 10000),
       {json, kRule, finding(10000)},
       write,
       "r.json takes",
       ".pb"},
      {"bytes of rules in text format",
       with(&Limits::textBytes, 10000),
       {rule("W", 10000)},
       "type: DUMP_RULES dump_rules { data_file { scheme: FILE path: 'r.txt' } }",
       "r.txt takes",
       ".pb"},
  };
}

TEST(Limits, RefuseWhatIsTooMuchAndKeepWhatIsThere) {
  for (const LimitCase& c : limitCases()) {
    SCOPED_TRACE(c.name);
    TestServer server(c.limits);
    server.prepare(c.before);
    for (int times = 0; times < 2; ++times) {
      const Response response = server.ask(c.request);
      EXPECT_EQ(static_cast<int>(ErrorCode::LimitExceeded), response.error().code())
          << textOf(response);
      EXPECT_THAT(response.error().msg(),
                  testing::AllOf(testing::HasSubstr(c.what), testing::HasSubstr(c.advice)));
    }
    EXPECT_TRUE(server.files.contents.empty());
    const bool hasSession = !c.before.empty() && c.before[0].find("START") != std::string::npos;
    if (hasSession) {
      server.ask(kRule);  // the one that has grown
      const auto kept = std::count_if(c.before.begin(), c.before.end(), [](const auto& request) {
        return request.find("CREATE_VIOLATION") != std::string::npos;
      });
      EXPECT_EQ(kept, server.result().violation_count());
    }
  }
}

TEST(Limits, GiveBackWhatIsDiscarded) {
  TestServer server(with(&Limits::bytes, 100000));
  server.prepare({kStart, kRule});
  for (int round = 0; round < 100; ++round) {
    server.prepare({rule("R", 20000), finding(20000),
                    "type: RESET_SESSION reset_session { session { name: '' uuid: 's' } }"});
  }
}

// A rule that was replaced is kept while findings refer to it.
TEST(Limits, CountRulesThatWereReplaced) {
  TestServer server(with(&Limits::bytes, 100000));
  server.prepare({kStart});
  int recorded = 0;
  while (server.ask(rule("W", 10000)).type() == Response::STATUS_RESPONSE &&
         server.ask(kFinding).type() == Response::VIOLATION && recorded < 1000) {
    ++recorded;
  }
  EXPECT_GT(recorded, 5);
  EXPECT_LT(recorded, 10);
  EXPECT_EQ(recorded, server.result().violation_count());
}

TEST(Limits, CountNothingThatMemoryLacksFor) {
  const Limits limits;
  rule_server::Budget budget(limits.bytes);
  rule_server::SessionState state(parse<Session>("name: 'n' uuid: 's'"), limits, budget);
  const std::size_t empty = state.bytes;
  const auto body = parse<CreateViolation>("rule_key: 'R' session_uuid: 's'");
  const auto rule = rule_server::makeRule(
      "R", parse<RuleSpec>("key: 'R' full_name: '" + std::string(100, 'f') + "'"), limits, budget);
  std::int32_t id = 0;
  int failures = 0;
  for (; id == 0; ++failures) {
    Finding finding = makeFinding(rule, body, rule_server::makeViolation(rule->spec, body), budget);
    failingAllocation = failures;
    try {
      id = state.add(std::move(finding), limits);
    } catch (const std::bad_alloc&) {
      EXPECT_EQ(empty, state.bytes) << failures;
      EXPECT_EQ(0U, state.findings.size() + state.violated.size()) << failures;
    }
    failingAllocation = -1;
  }
  EXPECT_GT(failures, 4);
  EXPECT_EQ(1, id);
  EXPECT_EQ(1U, state.violated.count("R"));
}

using Clock = std::chrono::steady_clock;

// Performs requests until done, and returns the longest time that one of them took.
Clock::duration longestWait(TestServer& server, const std::atomic<bool>& done, int* count) {
  const auto finding = parse<Request>(
      "type: CREATE_VIOLATION create_violation { rule_key: 'W' session_uuid: 'other' }");
  const auto result =
      parse<Request>("type: GET_SESSION_RESULT get_session_result { session_uuid: 'another' }");
  Clock::duration longest{};
  while (!done) {
    for (const Request& request : {finding, result}) {
      const auto start = Clock::now();
      EXPECT_NE(Response::ERROR_RESPONSE, server.server.handle(request).type());
      longest = std::max(longest, Clock::now() - start);
    }
    ++*count;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return longest;
}

// The lock is held for milliseconds. Under it the collection would take seconds.
TEST(Limits, LetOthersWorkWhileAMillionFindingsAreCollected) {
  constexpr int kFindings = 1'000'000;
  TestServer server;
  server.prepare({kStart, kRule, "type: START_SESSION start_session { name: 'n' uuid: 'other' }",
                  "type: START_SESSION start_session { name: 'n' uuid: 'another' }"});
  const auto request = parse<Request>(kFinding);
  for (int i = 1; i <= kFindings; ++i) {
    ASSERT_EQ(i, server.server.handle(request).violation().id());
  }
  EXPECT_TRUE(server.server.takesLong(parse<Request>(kResult)));
  std::atomic<bool> done{false};
  int count = 0;
  Clock::duration longest{};
  std::thread other([&] { longest = longestWait(server, done, &count); });
  const auto start = Clock::now();
  const Response response = server.server.handle(parse<Request>(kResult));
  const auto took = Clock::now() - start;
  done = true;
  other.join();
  EXPECT_EQ(kFindings, response.session_result().violation_count());
  EXPECT_GT(count, 10);
  EXPECT_LT(longest, took / 4);
  using Milliseconds = std::chrono::duration<double, std::milli>;
  std::cout << kFindings << " findings were collected in " << Milliseconds(took).count()
            << " ms, and others waited for " << Milliseconds(longest).count() << " ms at most\n";
}

TEST(Files, AreRefusedByAServerThatWasGivenNone) {
  FakeEnvironment fake;
  auto environment = fake.environment();
  environment.files = nullptr;
  rule_server::Server server(environment);
  const std::string file = "{ scheme: FILE path: 'r.txt' }";
  for (const std::string& request :
       {"type: START_SESSION start_session { name: 'n' report_file " + file + " }",
        "type: START_SESSION start_session { name: 'n' proto_file " + file + " }",
        "type: LOAD_RULESPEC_FILE load_rulespec_file { data_file " + file + " }",
        "type: DUMP_RULES dump_rules { data_file " + file + " }"}) {
    EXPECT_EQ(static_cast<int>(ErrorCode::FileAccess),
              server.handle(parse<Request>(request)).error().code())
        << request;
  }
}

}  // namespace
}  // namespace tests
