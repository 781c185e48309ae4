// SPDX-License-Identifier: Apache-2.0

// A host that parses, serializes and renders messages doesn't pay for their descriptors: the
// first use of reflection builds them. A program of its own, since nothing else may do that.

#include <google/protobuf/descriptor.h>
#include <gtest/gtest.h>

#include "support/allocations.h"
#include "support/messages.h"
#include "support/use_library.h"

namespace {

bool areBuilt() {
  return google::protobuf::DescriptorPool::generated_pool()->InternalIsFileLoaded(
      "RuleService.proto");
}

// How often memory is allocated for the descriptor and the reflection of every type.
std::size_t allocationsOfReflection() {
  const std::size_t before = tests::allocations();
  for (const auto* message : tests::allMessages()) {
    EXPECT_NE(message->GetDescriptor(), nullptr);
    EXPECT_NE(message->GetReflection(), nullptr);
  }
  return tests::allocations() - before;
}

TEST(Descriptors, AreBuiltByTheFirstUseOfReflection) {
  tests::allMessages();
  EXPECT_FALSE(areBuilt()) << "by loading";
  tests::useDefaultInstances();
  tests::useParsing();
  EXPECT_FALSE(areBuilt()) << "by parsing or serializing";
  tests::useRendering();
  EXPECT_FALSE(areBuilt()) << "by rendering";
  EXPECT_GT(allocationsOfReflection(), 0u);
  EXPECT_TRUE(areBuilt());
  EXPECT_EQ(allocationsOfReflection(), 0u) << "by the second use";
}

}  // namespace
