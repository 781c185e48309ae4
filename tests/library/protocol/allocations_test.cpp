// SPDX-License-Identifier: Apache-2.0

// What parsing and serializing allocate: nothing for a request that is reused, one string
// for a result.

#include "support/allocations.h"

#include <gtest/gtest.h>

#include <string>

#include "support/messages.h"

namespace {

using namespace vok::rulecheck;

// Texts of more than 15 bytes, which have memory of their own.
const std::string text = "'top/uart/registers/baud_count'";
const std::string argument = "arg { ref { name: " + text + " url { path: " + text + " } } } ";

TEST(Allocations, StopOnceAReusedRequestHasHeldTheLargest) {
  const std::string start = "create_violation { rule_key: " + text + " args { " + argument;
  const std::string large =
      tests::bytesOf(tests::parse<Request>(start + argument + argument + "} }"));
  const std::string small = tests::bytesOf(tests::parse<Request>(start + "} }"));
  Request request;
  for (const bool isFirst : {true, false, false}) {
    const auto before = tests::allocations();
    ASSERT_TRUE(request.ParsePartialFromString(small));
    ASSERT_TRUE(request.ParsePartialFromString(large));
    EXPECT_EQ(tests::allocations() > before, isFirst);
  }
}

TEST(Allocations, AreOneStringWhenAResultIsSerialized) {
  SessionResult result;
  auto& violations = *result.mutable_violations()->mutable_hashmap();
  for (int id = 0; id < 1000; ++id) {
    tests::fill("details { args { " + argument + "} }", &violations[id]);
  }
  std::string bytes;
  const auto before = tests::allocations();
  result.SerializePartialToString(&bytes);
  const std::size_t ofEachEntry = GOOGLE_PROTOBUF_VERSION < 3004000 ? 2 : 0;
  EXPECT_EQ(tests::allocations() - before, 1 + ofEachEntry * 1000);
}

}  // namespace
