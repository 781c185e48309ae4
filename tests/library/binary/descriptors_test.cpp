// SPDX-License-Identifier: Apache-2.0

// A host that carries and renders messages doesn't pay for their descriptors: the
// first use of reflection builds them. A program of its own, so that nothing else
// does.

#include <google/protobuf/arena.h>
#include <google/protobuf/descriptor.h>
#include <gtest/gtest.h>
#include <vok/rulecheck/Converter.h>

#include <cstddef>
#include <memory>
#include <string>

#include "support/allocations.h"
#include "support/messages.h"

namespace {

using google::protobuf::DescriptorPool;
using google::protobuf::Message;
using namespace vok::rulecheck;

bool areBuilt() {
  return DescriptorPool::generated_pool()->InternalIsFileLoaded("RuleService.proto");
}

SessionResult makeResult() {
  SessionResult result;
  result.mutable_session()->set_name("s");
  Violation& violation = (*result.mutable_violations()->mutable_hashmap())[1];
  violation.set_id(1);
  violation.set_severity(Violation::SEV_ERROR);
  violation.mutable_actual_value()->set_double_val(1.5);
  (*violation.mutable_categories())[3] = "timing";
  violation.mutable_details()->set_text("Port %1");
  Arg* argument = violation.mutable_details()->mutable_args()->add_arg();
  argument->mutable_refs()->add_ref()->set_type(Reference::LOOP);
  return result;
}

// All that needs no descriptor. Returns the bytes that were carried.
std::string carry() {
  const SessionResult result = makeResult();
  std::string bytes;
  SessionResult received;
  EXPECT_TRUE(result.SerializeToString(&bytes) && received.ParseFromString(bytes));
  const std::string unknown = "\xf8\x7f\x01";
  EXPECT_TRUE(received.ParseFromString(bytes + unknown));
  google::protobuf::Arena arena;
  Message* onArena = received.New(&arena);
  EXPECT_TRUE(onArena->ParseFromString(bytes));
  SessionResult merged(received);
  merged.MergeFrom(result);
  merged.Swap(&received);
  merged.Clear();
  EXPECT_TRUE(!merged.IsInitialized() && merged.ByteSizeLong() == 0);
  EXPECT_FALSE(merged.ParsePartialFromString("\x0a"));
  return bytes;
}

std::string render() {
  const SessionResult result = makeResult();
  const Violation& violation = result.violations().hashmap().at(1);
  Link link;
  link.mutable_url()->set_scheme(Resource::FILE);
  return Converter::toString(violation.severity()) + Converter::toString(violation.actual_value()) +
         Converter::toHtml(violation.details().args().arg(0)) + Converter::toHtml(link);
}

// Bytes that are allocated when every type is asked for its descriptor and its
// reflection.
std::size_t bytesOfReflection() {
  const std::size_t before = tests::allocatedBytes();
  for (const Message* message : tests::allMessages()) {
    EXPECT_NE(message->GetDescriptor(), nullptr);
    EXPECT_NE(message->GetReflection(), nullptr);
  }
  return tests::allocatedBytes() - before;
}

TEST(Descriptors, AreBuiltByTheFirstUseOfReflectionAndByNothingEarlier) {
  const std::size_t bytesOfTheSchema = 9019;
  tests::allMessages();
  EXPECT_FALSE(areBuilt()) << "by loading";
  EXPECT_NE(carry(), "");
  EXPECT_FALSE(areBuilt()) << "by parsing or serializing";
  EXPECT_NE(render(), "");
  EXPECT_FALSE(areBuilt()) << "by rendering";
  EXPECT_GT(bytesOfReflection(), bytesOfTheSchema);
  EXPECT_TRUE(areBuilt());
  EXPECT_EQ(bytesOfReflection(), 0u) << "by the second use";
}

}  // namespace
