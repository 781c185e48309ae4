// SPDX-License-Identifier: Apache-2.0

// Every field of every message with each wrong wire type and with lengths past the end.

#include <gmock/gmock.h>
#include <google/protobuf/descriptor.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

#include "parse_and_serialize.h"
#include "support/messages.h"

namespace {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using tests::tag;
using tests::toHex;
using tests::varint;
using tests::writtenAgain;

enum WireType { kVarint, kEightBytes, kLength, kGroup, kEndOfGroup, kFourBytes, kNone6, kNone7 };

WireType wireTypeOf(const FieldDescriptor& field) {
  switch (field.cpp_type()) {
    case FieldDescriptor::CPPTYPE_STRING:
    case FieldDescriptor::CPPTYPE_MESSAGE: return kLength;
    case FieldDescriptor::CPPTYPE_DOUBLE: return kEightBytes;
    default: return kVarint;
  }
}

// The field with that wire type and some value; wire types 4, 6 and 7 have none.
std::string fieldWith(int number, WireType wireType) {
  const std::string start = tag(number, wireType);
  switch (wireType) {
    case kVarint: return start + varint(300);
    case kEightBytes: return start + std::string(8, '\x01');
    case kLength: return tests::record(number, "text");
    case kGroup: return start + fieldWith(1, kVarint) + tag(number, kEndOfGroup);
    case kFourBytes: return start + std::string(4, '\x01');
    default: return start;
  }
}

template <typename Check>
void forEachField(Check check) {
  for (const Message* prototype : tests::allMessages()) {
    for (int i = 0; i < prototype->GetDescriptor()->field_count(); ++i) {
      const FieldDescriptor& field = *prototype->GetDescriptor()->field(i);
      SCOPED_TRACE(std::string(field.full_name()));
      check(*prototype, field);
    }
  }
}

TEST(WrongWireTypes, MakeAFieldUnknownOrAreRejected) {
  forEachField([](const Message& prototype, const FieldDescriptor& field) {
    for (const WireType wireType : {kVarint, kEightBytes, kLength, kGroup, kFourBytes}) {
      if (wireType != wireTypeOf(field)) {
        const std::string bytes = fieldWith(field.number(), wireType);
        EXPECT_EQ(writtenAgain(prototype, bytes), toHex(bytes));
      }
    }
    for (const WireType wireType : {kEndOfGroup, kNone6, kNone7}) {
      EXPECT_EQ(writtenAgain(prototype, fieldWith(field.number(), wireType)), "refused");
    }
  });
}

TEST(Lengths, PastTheEndAreRejectedForEveryField) {
  forEachField([](const Message& prototype, const FieldDescriptor& field) {
    for (const std::uint64_t length : {
           std::uint64_t{2}, std::uint64_t{128}, std::uint64_t{50000000},
               (std::uint64_t{1} << 31) - 1, std::uint64_t{1} << 31, std::uint64_t{1} << 63,
#if GOOGLE_PROTOBUF_VERSION >= 3004000
               (std::uint64_t{1} << 32) + 1,  // 1 to earlier releases
#endif
               std::numeric_limits<std::uint64_t>::max()
         }) {
      const std::string bytes = tag(field.number(), kLength) + varint(length) + "\x08";
      EXPECT_EQ(writtenAgain(prototype, bytes), "refused") << length;
    }
  });
}

TEST(UnlistedNumbers, WiderThan32BitsSurviveOrLoseTheirHighBits) {
  EXPECT_THAT(writtenAgain(vok::rulecheck::Resource::default_instance(),
                           tests::fromHex("08 87 80 80 80 10")),
              testing::AnyOf("08 87 80 80 80 10", "08 07"));
}

}  // namespace
