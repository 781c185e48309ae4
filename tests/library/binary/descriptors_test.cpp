// SPDX-License-Identifier: Apache-2.0

// A host that parses, serializes and renders messages doesn't pay for their descriptors: the
// first use of reflection builds them. A program of its own, since nothing else may do that.

#include <google/protobuf/descriptor.h>
#include <gtest/gtest.h>

#include "support/messages.h"
#include "support/use_library.h"

namespace {

bool areBuilt() {
  return google::protobuf::DescriptorPool::generated_pool()->InternalIsFileLoaded(
      "RuleService.proto");
}

TEST(Descriptors, AreBuiltByTheFirstUseOfReflection) {
  tests::allMessages();
  EXPECT_FALSE(areBuilt()) << "by loading";
  tests::useDefaultInstances();
  tests::useParsing();
  EXPECT_FALSE(areBuilt()) << "by parsing or serializing";
  tests::useRendering();
  EXPECT_FALSE(areBuilt()) << "by rendering";
  EXPECT_NE(vok::rulecheck::Link::descriptor(), nullptr);
  EXPECT_TRUE(areBuilt());
}

}  // namespace
