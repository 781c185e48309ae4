// SPDX-License-Identifier: Apache-2.0

// What carrying allocates: nothing for one more request that a message is reused
// for, and one string for a serialized result.

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
    reference->set_type(Reference::PORT);
    reference->set_name("top/uart/port_" + std::to_string(number * 1000));
    reference->mutable_url()->set_scheme(Resource::FILE);
    reference->mutable_url()->set_path(std::string(static_cast<std::size_t>(number), 'p'));
  }
}

std::string requestOf(int number) {
  Request request;
  request.set_type(Request::CREATE_VIOLATION);
  CreateViolation* body = request.mutable_create_violation();
  body->set_rule_key("a-rule-with-a-name-of-its-own-" + std::to_string(number));
  body->mutable_actual_value()->set_int_val(number);
  fill(number, body->mutable_args());
  return request.SerializeAsString();
}

std::vector<std::string> requests() {
  std::vector<std::string> requests;
  for (int number = 0; number < 100; ++number) {
    requests.push_back(requestOf(number));
  }
  return requests;
}

TEST(Allocations, OfAReusedRequestEndWhenItHasHeldThemAll) {
  const auto stream = requests();
  Request request;
  for (int time = 0; time < 3; ++time) {
    const auto before = tests::allocations();
    for (const std::string& bytes : stream) {
      ASSERT_TRUE(request.ParseFromString(bytes));
    }
    EXPECT_EQ(tests::allocations() > before, time == 0) << "time " << time;
  }
}

TEST(Allocations, OfSerializingAResultAreOneStrings) {
  SessionResult result;
  result.mutable_session()->set_name("s");
  for (int number = 0; number < 1000; ++number) {
    Violation& violation = (*result.mutable_violations()->mutable_hashmap())[number];
    violation.set_id(number);
    violation.mutable_details()->set_text("the text of a violation");
    fill(number % 100, violation.mutable_details()->mutable_args());
  }
  std::string bytes;
  const auto before = tests::allocations();
  result.SerializePartialToString(&bytes);
#if GOOGLE_PROTOBUF_VERSION < 3004000
  const std::size_t ofEachEntry = 2;
#else
  const std::size_t ofEachEntry = 0;
#endif
  EXPECT_EQ(tests::allocations() - before, 1 + ofEachEntry * 1000);
  EXPECT_GT(bytes.size(), 100000u);
}

}  // namespace
