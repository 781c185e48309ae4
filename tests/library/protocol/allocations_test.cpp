// SPDX-License-Identifier: Apache-2.0

// What parsing and serializing allocate: nothing for a request that is reused, one string
// for a result.

#include <gtest/gtest.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <cstddef>
#include <string>
#include <vector>

#include "support/allocations.h"

namespace {

using namespace vok::rulecheck;

void fill(int number, ArgList* args) {
  for (int i = 0; i <= number % 4; ++i) {
    Reference* reference = args->add_arg()->mutable_ref();
    reference->set_name("top/uart/port_" + std::to_string(number * 1000));
    reference->mutable_url()->set_path(std::string(static_cast<std::size_t>(number), 'p'));
  }
}

TEST(Allocations, StopOnceAReusedRequestHasHeldTheLargest) {
  std::vector<std::string> stream;
  for (int number = 0; number < 100; ++number) {
    Request request;
    request.mutable_create_violation()->set_rule_key("a-long-name-of-rule-" +
                                                     std::to_string(number));
    fill(number, request.mutable_create_violation()->mutable_args());
    stream.push_back(request.SerializePartialAsString());
  }
  Request request;
  for (int time = 0; time < 3; ++time) {
    const auto before = tests::allocations();
    for (const std::string& bytes : stream) {
      ASSERT_TRUE(request.ParsePartialFromString(bytes));
    }
    EXPECT_EQ(tests::allocations() > before, time == 0) << "time " << time;
  }
}

TEST(Allocations, AreOneStringWhenAResultIsSerialized) {
  SessionResult result;
  for (int number = 0; number < 1000; ++number) {
    Violation& violation = (*result.mutable_violations()->mutable_hashmap())[number];
    fill(number % 100, violation.mutable_details()->mutable_args());
  }
  std::string bytes;
  const auto before = tests::allocations();
  result.SerializePartialToString(&bytes);
  const std::size_t ofEachEntry = GOOGLE_PROTOBUF_VERSION < 3004000 ? 2 : 0;
  EXPECT_EQ(tests::allocations() - before, 1 + ofEachEntry * 1000);
  EXPECT_GT(bytes.size(), 100000u);
}

}  // namespace
