// SPDX-License-Identifier: Apache-2.0

// Which bytes parse, and what the message then serializes to: a table of cases, every field of
// every message with each wrong wire type and with lengths past the end, and every golden vector
// cut at every byte and with every single bit flipped.

#include <google/protobuf/descriptor.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <regex>
#include <string>

#include "parse_and_serialize.h"
#include "support/messages.h"
#include "vectors/golden_vectors.h"

namespace {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using tests::tag;
using tests::varint;
using tests::writtenAgain;

const char* const kSame = "";

struct Case {
  const char* what;
  const char* type;
  const char* bytes;  // "(a3 06)*100" are those bytes 100 times
  const char* written;
  const char* written33 = nullptr;  // with releases before 3.4, if they differ
};

const Case cases[] = {
    // clang-format off
    {"An unknown field: it is kept, after the known ones", "Resource", "a0 06 05 12 01 68", "12 01 68 a0 06 05"},
    {"Several unknown fields: they stay in the order of their arrival", "Resource", "a0 06 05 12 01 68 98 06 06", "12 01 68 a0 06 05 98 06 06"},
    {"A known field with another wire type: it is unknown", "Resource", "10 05 12 01 68", "12 01 68 10 05"},
    {"A string as a group: it is unknown", "Resource", "13 08 01 14", kSame},
    {"An unlisted number of an enumeration: it is unknown", "Violation", "10 09 08 01", "08 01 10 09"},
    {"A negative number that the enumeration does not list: it is unknown", "Violation", "10 ff ff ff ff ff ff ff ff ff 01 08 01", "08 01 10 ff ff ff ff ff ff ff ff ff 01"},
    {"A listed number and an unlisted one: both are kept", "Violation", "10 01 10 09", kSame},
    {"A value twice: the last one wins", "Violation", "08 01 08 02", "08 02"},
    {"A string twice: the last one wins", "Link", "0a 01 61 0a 00", "0a 00"},
    {"A message twice: the two merge", "Link", "12 02 08 01 12 03 12 01 68", "12 05 08 01 12 01 68"},
    {"A longer varint than needed", "Resource", "18 81 80 80 80 80 80 80 80 80 00", "18 01"},
    {"A varint of more than 64 bits in ten bytes: the lowest 64 count", "Scalar", "08 ff ff ff ff ff ff ff ff ff 7f", "08 ff ff ff ff ff ff ff ff ff 01"},
    {"An `int32` of more than 32 bits: the lowest 32 count", "Resource", "18 81 80 80 80 10", "18 01"},
    {"A negative `int32` in five bytes", "Resource", "18 ff ff ff ff 0f", "18 ff ff ff ff ff ff ff ff ff 01"},
    {"An `uint32` of more than 32 bits: the lowest 32 count", "Version", "08 ff ff ff ff ff ff ff ff ff 01", "08 ff ff ff ff 0f"},
    {"A `bool` that is neither 0 nor 1: true", "LoadRuleDataFile", "10 80 80 80 80 10", "10 01"},
    {"A longer tag than needed, of five bytes", "Resource", "98 80 80 80 00 01", "18 01"},
    {"A longer length than needed, of five bytes", "Resource", "12 81 80 80 80 00 61", "12 01 61"},
    {"The largest field number", "Resource", "f8 ff ff ff 0f 01", kSame},
    {"An empty map entry: key 0, an empty value", "Violation", "5a 00", "5a 04 08 00 12 00"},
    {"An entry without value: an empty one", "Violation", "5a 02 08 03", "5a 04 08 03 12 00"},
    {"An entry without key: key 0", "Violation", "5a 03 12 01 63", "5a 05 08 00 12 01 63"},
    {"An entry with its key after its value", "Violation", "5a 05 12 01 63 08 03", "5a 05 08 03 12 01 63"},
    {"A key in two entries: the last entry wins", "Violation", "5a 05 08 03 12 01 61 5a 05 08 03 12 01 62", "5a 05 08 03 12 01 62"},
    {"A key in two entries, the last one without value", "Violation", "5a 05 08 03 12 01 61 5a 02 08 03", "5a 04 08 03 12 00"},
    {"A key in two entries with messages: the last one replaces the first whole", "ViolationMap", "0a 0b 08 03 12 07 08 01 10 01 1a 01 6b 0a 06 08 03 12 02 08 09", "0a 06 08 03 12 02 08 09"},
    {"Two keys in one entry: the last one wins", "Violation", "5a 07 08 03 12 01 61 08 04", "5a 05 08 04 12 01 61"},
    {"Two strings in one entry: the last one wins", "Violation", "5a 08 08 03 12 01 61 12 01 62", "5a 05 08 03 12 01 62"},
    {"Two messages in one entry: they merge", "ViolationMap", "0a 0a 08 03 12 02 08 01 12 02 10 01", "0a 08 08 03 12 04 08 01 10 01"},
    {"An unknown field in an entry: it is dropped", "Violation", "5a 07 08 03 18 05 12 01 61", "5a 05 08 03 12 01 61"},
    {"A key with another wire type: as if absent", "Violation", "5a 06 0a 01 03 12 01 61", "5a 05 08 00 12 01 61"},
    {"A value with another wire type: as if absent", "Violation", "5a 04 08 03 10 05", "5a 04 08 03 12 00"},
    {"An unknown field in an entry's message: it is kept", "ViolationMap", "0a 09 08 03 12 05 a0 06 05 08 01", "0a 09 08 03 12 05 08 01 a0 06 05"},
    {"100 nested groups", "Link", "(a3 06)*100 (a4 06)*100", kSame},
    {"101 nested groups", "Link", "(a3 06)*101 (a4 06)*101", "refused"},
    {"99 nested groups in a message in a message", "Link", "12 8c 03 (a3 06)*99 (a4 06)*99", kSame},
    {"100 nested groups in a message in a message", "Link", "12 90 03 (a3 06)*100 (a4 06)*100", "refused"},
    {"98 nested groups in a message in a map", "ViolationMap", "0a 8b 03 12 88 03 (a3 06)*98 (a4 06)*98", "0a 8d 03 08 00 12 88 03 (a3 06)*98 (a4 06)*98"},
    {"99 nested groups in a message in a map", "ViolationMap", "0a 8f 03 12 8c 03 (a3 06)*99 (a4 06)*99", "refused"},
    {"10,000 nested groups", "Link", "(a3 06)*10000 (a4 06)*10000", "refused"},
    {"10,000 nested groups without end", "Link", "(a3 06)*10000", "refused"},
    {"A group without end", "Resource", "a3 06 08 01", "refused"},
    {"The end of a group that never began", "Resource", "a4 06", "refused"},
    {"A group with the end of another", "Resource", "a3 06 ac 06", "refused"},
    {"The end of a group in a map entry", "Violation", "5a 01 0c", "refused"},
    {"A field without value", "Resource", "08", "refused"},
    {"A varint of eleven bytes", "Resource", "18 ff ff ff ff ff ff ff ff ff ff 01", "refused"},
    {"A tag of six bytes", "Resource", "98 80 80 80 80 00 01", "refused", "18 01"},
    {"A length of six bytes", "Resource", "12 81 80 80 80 80 00 61", "refused", "12 01 61"},
    {"A string that runs past the end", "Resource", "12 05 61", "refused"},
    {"A length of 2^31 - 1", "Resource", "12 ff ff ff ff 07 61", "refused"},
    {"A length of 2^31", "Link", "12 80 80 80 80 08 61", "refused"},
    {"A length of 2^32 + 1", "Resource", "12 81 80 80 80 10 61", "refused", "12 01 61"},
    {"A length of 2^63, of an unknown field", "Resource", "a2 06 80 80 80 80 80 80 80 80 80 01 61", "refused"},
    {"A length of 2^64 - 1, of a map entry", "Violation", "5a ff ff ff ff ff ff ff ff ff 01 61", "refused"},
    {"A message that runs past the end of the one that it is in", "ViolationMap", "0a 04 08 03 12 04 08 01 10 01", "refused", "0a 04 08 03 12 00 08 01 10 01"},
    {"A message that is cut off between its fields", "Link", "12 04 08 01", "refused", "12 02 08 01"},
    {"A map entry that is cut off between its fields", "Violation", "5a 05 08 03", "refused", "5a 04 08 03 12 00"},
    {"A zero byte where a tag is due", "Resource", "00", "refused"},
    {"A zero byte after the last field", "Resource", "12 01 61 00", "refused"},
    {"Field number 0", "Resource", "02 00", "refused"},
    {"A field number above 2^29 - 1", "Resource", "80 80 80 80 10 01", "refused"},
    {"Wire type 6", "Resource", "0e 00", "refused"},
    {"Wire type 7", "Resource", "0f 00", "refused"},
    // clang-format on
};

// "08 (a3 06)*2" as "08 a3 06 a3 06".
std::string withoutRepetitions(std::string digits) {
  static const std::regex repetition(R"(\(([^)]*)\)\*(\d+))");
  for (std::smatch parts; std::regex_search(digits, parts, repetition);) {
    std::string repeated;
    for (int i = std::stoi(parts[2]); i > 0; --i) {
      repeated += parts[1].str() + (i > 1 ? " " : "");
    }
    digits = parts.prefix().str() + repeated + parts.suffix().str();
  }
  return digits;
}

TEST(Reader, ParsesOrRejectsAsDocumented) {
  for (const Case& c : cases) {
    const bool is33 = GOOGLE_PROTOBUF_VERSION < 3004000 && c.written33 != nullptr;
    const std::string written = is33 ? c.written33 : *c.written == '\0' ? c.bytes : c.written;
    EXPECT_EQ(writtenAgain(*tests::newMessage(c.type), tests::fromHex(withoutRepetitions(c.bytes))),
              withoutRepetitions(written))
        << c.what << ": " << c.type << " " << c.bytes;
  }
}

int wireTypeOf(const FieldDescriptor& field) {
  switch (field.cpp_type()) {
    case FieldDescriptor::CPPTYPE_STRING:
    case FieldDescriptor::CPPTYPE_MESSAGE: return 2;
    case FieldDescriptor::CPPTYPE_DOUBLE: return 1;
    default: return 0;
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
    const std::string group = tag(1, 0) + varint(300) + tag(field.number(), 4);
    const std::string values[] = {varint(300), std::string(8, '\x01'), "\x04text", group,
                                  "",          std::string(4, '\x01'), "",         ""};
    for (int wireType = 0; wireType < 8; ++wireType) {
      const std::string bytes = tag(field.number(), wireType) + values[wireType];
      const bool isRejected = values[wireType].empty();
      if (wireType != wireTypeOf(field)) {
        EXPECT_EQ(writtenAgain(prototype, bytes), isRejected ? "refused" : tests::toHex(bytes));
      }
    }
  });
}

TEST(Lengths, PastTheEndAreRejectedForEveryField) {
  const auto bit = [](int number) { return std::uint64_t{1} << number; };
  forEachField([bit](const Message& prototype, const FieldDescriptor& field) {
    for (const std::uint64_t length : {bit(1), bit(7), std::uint64_t{50000000}, bit(31) - 1,
                                       bit(31), bit(32) + 1, bit(63), ~std::uint64_t{0}}) {
      // 3.3 takes lengths modulo 2^32.
      if (GOOGLE_PROTOBUF_VERSION >= 3004000 || length != bit(32) + 1) {
        const std::string bytes = tag(field.number(), 2) + varint(length) + "\x08";
        EXPECT_EQ(writtenAgain(prototype, bytes), "refused") << length;
      }
    }
  });
}

TEST(UnlistedNumbers, WiderThan32BitsSurviveOrLoseTheirHighBits) {
  const std::string bytes = "08 87 80 80 80 10";
  const std::string written =
      writtenAgain(vok::rulecheck::Resource::default_instance(), tests::fromHex(bytes));
  EXPECT_TRUE(written == bytes || written == "08 07") << written;
}

// After a failure a message may hold anything, but it can be copied and parsed into again.
void expectRefusedOrAFixedPoint(const tests::GoldenVector& vector, const std::string& damaged) {
  const auto message = tests::newMessage(vector.type);
  if (writtenAgain(*message, damaged) == "refused") {
    EXPECT_FALSE(message->ParsePartialFromString(damaged));
    const std::unique_ptr<Message> copy(message->New());
    copy->CopyFrom(*message);
    EXPECT_EQ(tests::bytesOf(*copy), tests::bytesOf(*message));
    EXPECT_TRUE(message->ParseFromString(vector.wire));
    EXPECT_EQ(tests::bytesOf(*message), vector.wire);
  }
}

TEST(DamagedVectors, AreRejectedOrSerializeStably) {
  for (const tests::GoldenVector& vector : tests::goldenVectors()) {
    for (std::size_t bit = 0; bit < 8 * vector.wire.size(); ++bit) {
      SCOPED_TRACE(vector.name + " damaged at bit " + std::to_string(bit));
      std::string flipped = vector.wire;
      flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ (1 << bit % 8));
      expectRefusedOrAFixedPoint(vector, flipped);
      if (bit % 8 == 0) {
        expectRefusedOrAFixedPoint(vector, vector.wire.substr(0, bit / 8));
      }
    }
  }
}

// The messages in the longest chain that begins with that type. None contains itself:
// that would end in a stack overflow.
int longestChain(const google::protobuf::Descriptor& type) {
  int longest = 0;
  for (int i = 0; i < type.field_count(); ++i) {
    if (const auto* inner = type.field(i)->message_type()) {
      longest = std::max(longest, longestChain(*inner));
    }
  }
  return longest + 1;
}

TEST(Messages, NestAtMostElevenDeep) {
  int longest = 0;
  for (const Message* prototype : tests::allMessages()) {
    longest = std::max(longest, longestChain(*prototype->GetDescriptor()));
  }
  EXPECT_EQ(longest, 11);
}

}  // namespace
