// SPDX-License-Identifier: Apache-2.0

// Every field of every message with wrong input: each wrong wire type, lengths past the
// end, and unlisted numbers.

#include <gmock/gmock.h>
#include <google/protobuf/descriptor.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

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

bool hasValue(int wireType) {
  return wireType <= kGroup || wireType == kFourBytes;
}

// The field with that wire type and some value; wire types 4, 6 and 7 have none.
std::string fieldWith(int number, int wireType) {
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

void expectOnlyUnknown(const Message& prototype, const std::string& bytes) {
  EXPECT_EQ(writtenAgain(prototype, bytes), toHex(bytes));
  const std::unique_ptr<Message> message(prototype.New());
  EXPECT_TRUE(message->ParsePartialFromString(bytes));
  message->DiscardUnknownFields();
  EXPECT_EQ(toHex(tests::bytesOf(*message)), "");
}

struct Field {
  const Message* prototype;
  const FieldDescriptor* descriptor;
};

std::vector<Field> allFields() {
  std::vector<Field> fields;
  for (const Message* prototype : tests::allMessages()) {
    for (int i = 0; i < prototype->GetDescriptor()->field_count(); ++i) {
      fields.push_back({prototype, prototype->GetDescriptor()->field(i)});
    }
  }
  return fields;
}

TEST(WrongWireTypes, MakeAFieldUnknownOrAreRejected) {
  for (const auto& [prototype, field] : allFields()) {
    SCOPED_TRACE(std::string(field->full_name()));
    EXPECT_FALSE(field->is_packable());
    for (int wireType = kVarint; wireType <= kNone7; ++wireType) {
      const std::string bytes = fieldWith(field->number(), wireType);
      if (!hasValue(wireType)) {
        EXPECT_EQ(writtenAgain(*prototype, bytes), "refused");
      } else if (wireType != wireTypeOf(*field)) {
        expectOnlyUnknown(*prototype, bytes);
      }
    }
  }
}

TEST(WrongWireTypes, MakeMapKeysAndValuesAbsent) {
  for (const auto& [prototype, field] : allFields()) {
    SCOPED_TRACE(std::string(field->full_name()));
    const std::string empty = writtenAgain(*prototype, tests::record(field->number(), ""));
    for (int part = 1; field->is_map() && part <= 2; ++part) {
      const WireType right = wireTypeOf(*field->message_type()->FindFieldByNumber(part));
      for (int wireType = kVarint; wireType <= kNone7; ++wireType) {
        if (wireType != right) {
          const std::string bytes = tests::record(field->number(), fieldWith(part, wireType));
          EXPECT_EQ(writtenAgain(*prototype, bytes), hasValue(wireType) ? empty : "refused");
        }
      }
    }
  }
}

TEST(Lengths, PastTheEndAreRejectedForEveryField) {
  for (const auto& [prototype, field] : allFields()) {
    SCOPED_TRACE(std::string(field->full_name()));
    for (const std::uint64_t length : {
           std::uint64_t{2}, std::uint64_t{128}, std::uint64_t{50000000},
               (std::uint64_t{1} << 31) - 1, std::uint64_t{1} << 31, std::uint64_t{1} << 63,
#if GOOGLE_PROTOBUF_VERSION >= 3004000
               (std::uint64_t{1} << 32) + 1,  // 1 to earlier releases
#endif
               std::numeric_limits<std::uint64_t>::max()
         }) {
      const std::string bytes = tag(field->number(), kLength) + varint(length) + "\x08";
      EXPECT_EQ(writtenAgain(*prototype, bytes), "refused") << length;
    }
  }
}

TEST(UnlistedNumbers, AreKeptAsUnknownFields) {
  for (const auto& [prototype, field] : allFields()) {
    if (field->cpp_type() != FieldDescriptor::CPPTYPE_ENUM) {
      continue;
    }
    SCOPED_TRACE(std::string(field->full_name()));
    const int count = field->enum_type()->value_count();
    for (const int number : {-1, 0, count, count + 1, std::numeric_limits<int>::min(),
                             std::numeric_limits<int>::max()}) {
      if (field->enum_type()->FindValueByNumber(number) == nullptr) {
        const auto bits = static_cast<std::uint64_t>(std::int64_t{number});
        expectOnlyUnknown(*prototype, tag(field->number(), kVarint) + varint(bits));
      }
    }
  }
}

TEST(UnlistedNumbers, WiderThan32BitsSurviveOrLoseTheirHighBits) {
  EXPECT_THAT(writtenAgain(vok::rulecheck::Resource::default_instance(),
                           tests::fromHex("08 87 80 80 80 10")),
              testing::AnyOf("08 87 80 80 80 10", "08 07"));
}

}  // namespace
