// SPDX-License-Identifier: Apache-2.0

// What the class of a message offers for each field. fields.py lists the fields.

#include <google/protobuf/descriptor.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <iterator>
#include <memory>
#include <string>

#include "support/messages.h"

namespace {

using google::protobuf::Message;
using namespace vok::rulecheck;

struct NumberCase {
  const char* message;
  const char* field;
  int number;
};

const NumberCase numberCases[] = {
#define VOK_FIELD(message, name, constant, number) {#message, #name, message::constant},
#define VOK_STRING(message, name)
#define VOK_MESSAGE(message, name)
#include "fields.inc"
#undef VOK_FIELD
#undef VOK_STRING
#undef VOK_MESSAGE
};

TEST(FieldNumbers, AreConstantsOfTheClass) {
  std::size_t fields = 0;
  for (const Message* message : tests::allMessages()) {
    fields += static_cast<std::size_t>(message->GetDescriptor()->field_count());
  }
  EXPECT_EQ(std::size(numberCases), fields);
  for (const NumberCase& c : numberCases) {
    const auto* field = tests::newMessage(c.message)->GetDescriptor()->FindFieldByName(c.field);
    EXPECT_EQ(c.number, field->number()) << c.message << "." << c.field;
  }
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
#define VOK_FIELD(message, name, constant, number)
#define VOK_STRING(message, name)                                                 \
  expectOwnershipPasses(#message "." #name, &message::has_##name, &message::name, \
                        &message::release_##name, &message::set_allocated_##name);
#define VOK_MESSAGE VOK_STRING
#include "fields.inc"
}

}  // namespace
