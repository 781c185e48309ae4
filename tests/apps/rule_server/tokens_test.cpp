// SPDX-License-Identifier: Apache-2.0

// How long the refusal of a token takes.

#include <gtest/gtest.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <algorithm>
#include <chrono>
#include <string>

#include "fake_environment.h"
#include "rule_server/rule_server.h"

namespace {

using Clock = std::chrono::steady_clock;
using vok::rulecheck::Request;
using vok::rulecheck::Response;

Clock::duration fastestRefusal(rule_server::Server& server, const std::string& guess) {
  Request request;
  request.set_type(Request::EXCHANGE_TOKEN);
  request.mutable_exchange_token()->set_token(guess);
  Clock::duration fastest = Clock::duration::max();
  for (int i = 0; i < 20; ++i) {
    const auto begin = Clock::now();
    const Response response = server.handle(request);
    fastest = std::min(fastest, Clock::now() - begin);
    EXPECT_EQ(Response::ERROR_RESPONSE, response.type());
  }
  return fastest;
}

TEST(Tokens, AreRefusedInTheSameTimeWhereverTheyAreWrong) {
  tests::FakeEnvironment fake;
  auto environment = fake.environment();
  environment.token = std::string(4U << 20U, 'x');
  rule_server::Server server(environment);
  std::string wrongAtTheBegin = environment.token;
  wrongAtTheBegin.front() = 'y';
  std::string wrongAtTheEnd = environment.token;
  wrongAtTheEnd.back() = 'y';
  const auto first = fastestRefusal(server, wrongAtTheBegin);
  const auto last = fastestRefusal(server, wrongAtTheEnd);
  EXPECT_LT(first, 5 * last);
  EXPECT_LT(last, 5 * first);
}

}  // namespace
