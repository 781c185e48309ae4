// SPDX-License-Identifier: Apache-2.0

// What the class of a message offers for a field. The lists of fields have one of each kind.

#include <gtest/gtest.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <memory>
#include <string>

#include "support/messages.h"

namespace {

using google::protobuf::Message;
using namespace vok::rulecheck;

TEST(FieldNumbers, AreConstantsOfTheClass) {
  EXPECT_EQ(static_cast<int>(Resource::kHostFieldNumber), 2);
  EXPECT_EQ(static_cast<int>(Violation::kRuleKeyFieldNumber), 3);
  EXPECT_EQ(static_cast<int>(ViolationMap::kHashmapFieldNumber), 1);
  EXPECT_EQ(static_cast<int>(ArgList::kArgFieldNumber), 1);
}

void fill(std::string* text) {
  *text = "text";
}
void fill(Message* message) {
  message->ParsePartialFromString(tests::fromHex("a0 06 05"));
}
std::string content(const std::string& text) {
  return text;
}
std::string content(const Message& message) {
  return tests::bytesOf(message);
}

template <typename Class, typename Value>
void expectOwnershipPasses(const char* field, bool (Class::*has)() const,
                           const Value& (Class::*get)() const, Value* (Class::*release)(),
                           void (Class::*setAllocated)(Value*)) {
  auto given = std::make_unique<Value>();
  fill(given.get());
  const std::string bytes = content(*given);
  Class message;
  (message.*setAllocated)(given.release());
  EXPECT_TRUE((message.*has)()) << field;
  EXPECT_EQ(content((message.*get)()), bytes) << field;

  const std::unique_ptr<Value> taken((message.*release)());
  ASSERT_NE(taken, nullptr) << field;
  EXPECT_EQ(content(*taken), bytes) << field;
  EXPECT_FALSE((message.*has)()) << field;

  (message.*setAllocated)(std::make_unique<Value>().release());
  EXPECT_TRUE((message.*has)()) << field;
  (message.*setAllocated)(nullptr);
  EXPECT_FALSE((message.*has)()) << field;
}

// A leak checker sees whether the values are freed.
TEST(StringsAndMessages, PassTheirOwnershipBothWays) {
#define VOK_FIELD(message, name)                                                  \
  expectOwnershipPasses(#message "." #name, &message::has_##name, &message::name, \
                        &message::release_##name, &message::set_allocated_##name);
  VOK_FIELD(Link, link_text)
  VOK_FIELD(Link, url)
  VOK_FIELD(CreateViolation, rule_key)
  VOK_FIELD(CreateViolation, args)
  VOK_FIELD(SessionResult, violations)
#undef VOK_FIELD
}

}  // namespace
