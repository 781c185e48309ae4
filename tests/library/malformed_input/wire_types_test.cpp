// SPDX-License-Identifier: Apache-2.0

// Every field of every message with everything but what belongs there: each
// wrong wire type, lengths that nothing backs, and unlisted numbers.

#include <gmock/gmock.h>
#include <google/protobuf/descriptor.h>
#include <google/protobuf/unknown_field_set.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <iostream>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "parse_and_serialize.h"
#include "support/messages.h"

namespace {

using google::protobuf::Descriptor;
using google::protobuf::EnumDescriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::UnknownField;
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

bool hasValue(int wireType) {
  return wireType <= kGroup || wireType == kFourBytes;
}

void forEachField(const std::function<void(const Message&, const FieldDescriptor&)>& look) {
  for (const Message* prototype : tests::allMessages()) {
    const Descriptor& descriptor = *prototype->GetDescriptor();
    for (int i = 0; i < descriptor.field_count(); ++i) {
      SCOPED_TRACE(std::string(descriptor.field(i)->full_name()));
      look(*prototype, *descriptor.field(i));
    }
  }
}

void expectOnlyUnknown(const Message& prototype, const std::string& bytes, int number,
                       int wireType) {
  static const UnknownField::Type types[] = {
      UnknownField::TYPE_VARINT, UnknownField::TYPE_FIXED64, UnknownField::TYPE_LENGTH_DELIMITED,
      UnknownField::TYPE_GROUP,  UnknownField::TYPE_GROUP,   UnknownField::TYPE_FIXED32};
  const std::unique_ptr<Message> message(prototype.New());
  ASSERT_TRUE(message->ParsePartialFromString(bytes));
  std::vector<const FieldDescriptor*> set;
  message->GetReflection()->ListFields(*message, &set);
  EXPECT_TRUE(set.empty());
  const auto& unknown = message->GetReflection()->GetUnknownFields(*message);
  ASSERT_EQ(unknown.field_count(), 1);
  EXPECT_EQ(unknown.field(0).number(), number);
  EXPECT_EQ(unknown.field(0).type(), types[wireType]);
}

TEST(WrongWireTypes, OfAnyFieldMakeItUnknownAndSurvive) {
  int tried = 0;
  forEachField([&tried](const Message& prototype, const FieldDescriptor& field) {
    for (const int wireType : {kVarint, kEightBytes, kLength, kGroup, kFourBytes}) {
      if (wireType == wireTypeOf(field)) {
        continue;
      }
      ++tried;
      const std::string bytes = fieldWith(field.number(), wireType);
      EXPECT_EQ(writtenAgain(prototype, bytes), toHex(bytes));
      expectOnlyUnknown(prototype, bytes, field.number(), wireType);
    }
  });
  std::cout << tried << " wrong wire types of fields\n";
}

TEST(WrongWireTypes, ThatEndAGroupOrDoNotExistAreRefused) {
  int tried = 0;
  forEachField([&tried](const Message& prototype, const FieldDescriptor& field) {
    for (const int wireType : {kEndOfGroup, kNone6, kNone7}) {
      ++tried;
      EXPECT_EQ(writtenAgain(prototype, fieldWith(field.number(), wireType)), "refused");
    }
  });
  std::cout << tried << " refused wire types of fields\n";
}

// An entry with a key or value of the wrong wire type is as one without it.
TEST(WrongWireTypes, OfKeysAndValuesOfMapsAreAsIfAbsent) {
  int tried = 0;
  forEachField([&tried](const Message& prototype, const FieldDescriptor& field) {
    if (!field.is_map()) {
      return;
    }
    const std::string empty = writtenAgain(prototype, tests::record(field.number(), ""));
    for (int part = 1; part <= 2; ++part) {
      const WireType right = wireTypeOf(*field.message_type()->FindFieldByNumber(part));
      for (int wireType = kVarint; wireType <= kNone7; ++wireType) {
        if (wireType == right) {
          continue;
        }
        ++tried;
        const std::string bytes = tests::record(field.number(), fieldWith(part, wireType));
        EXPECT_EQ(writtenAgain(prototype, bytes), hasValue(wireType) ? empty : "refused")
            << toHex(bytes);
      }
    }
  });
  std::cout << tried << " wrong wire types of keys and values\n";
}

TEST(Fields, CanNotBePacked) {
  forEachField(
      [](const Message&, const FieldDescriptor& field) { EXPECT_FALSE(field.is_packable()); });
}

// The last ones are 2^31 - 1, 2^31, 2^63, 2^64 - 1 and 2^32 + 1.
const std::uint64_t unbackedLengths[] = {
    2,           127,        128,
    65536,       50000000,   0x7fffffff,
    0x80000000,  1ULL << 63, std::numeric_limits<std::uint64_t>::max(),
#if GOOGLE_PROTOBUF_VERSION >= 3004000
    0x100000001,  // 1 to earlier releases
#endif
};

TEST(Lengths, OfAnyFieldThatRunPastTheEndAreRefused) {
  int tried = 0;
  forEachField([&tried](const Message& prototype, const FieldDescriptor& field) {
    for (const std::uint64_t length : unbackedLengths) {
      ++tried;
      const std::string bytes = tag(field.number(), kLength) + varint(length) + "\x08";
      EXPECT_EQ(writtenAgain(prototype, bytes), "refused") << length;
    }
  });
  std::cout << tried << " lengths past the end\n";
}

// Numbers around those that are listed, and the ends of the range.
std::vector<int> unlistedNumbers(const EnumDescriptor& values) {
  std::vector<int> numbers;
  for (int number = -1; number <= values.value_count() + 1; ++number) {
    numbers.push_back(number);
  }
  numbers.push_back(std::numeric_limits<int>::min());
  numbers.push_back(std::numeric_limits<int>::max());
  std::vector<int> unlisted;
  for (const int number : numbers) {
    if (values.FindValueByNumber(number) == nullptr) {
      unlisted.push_back(number);
    }
  }
  return unlisted;
}

TEST(UnlistedNumbers, OfAnyEnumerationStayUnknownAndSurvive) {
  int tried = 0;
  forEachField([&tried](const Message& prototype, const FieldDescriptor& field) {
    if (field.cpp_type() != FieldDescriptor::CPPTYPE_ENUM) {
      return;
    }
    for (const int number : unlistedNumbers(*field.enum_type())) {
      ++tried;
      const std::string bytes =
          tag(field.number(), kVarint) + varint(static_cast<std::uint64_t>(std::int64_t{number}));
      EXPECT_EQ(writtenAgain(prototype, bytes), toHex(bytes));
      expectOnlyUnknown(prototype, bytes, field.number(), kVarint);
    }
  });
  std::cout << tried << " unlisted numbers\n";
}

TEST(UnlistedNumbers, OfMoreThan32BitsSurviveOrLoseTheHighBits) {
  EXPECT_THAT(writtenAgain(vok::rulecheck::Resource::default_instance(),
                           tests::fromHex("08 87 80 80 80 10")),
              testing::AnyOf("08 87 80 80 80 10", "08 07"));
}

}  // namespace
