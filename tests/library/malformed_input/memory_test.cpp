// SPDX-License-Identifier: Apache-2.0

// How much memory hostile bytes can take. docs/protocol.md promises these numbers.

#include <gmock/gmock.h>
#include <google/protobuf/arena.h>
#include <google/protobuf/descriptor.h>
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "parse_and_serialize.h"
#include "support/allocations.h"
#include "support/messages.h"
#include "vectors/golden_vectors.h"

namespace {

using google::protobuf::Arena;
using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using tests::HeapMeter;

enum class Place { kHeap, kArena };

// The most memory that reading those bytes takes, the message included. The
// arena is one with default options.
std::size_t memoryToRead(const Message& prototype, const std::string& bytes, Place place) {
  const HeapMeter meter;
  Arena arena;
  const std::unique_ptr<Message> own(place == Place::kHeap ? prototype.New() : nullptr);
  Message* message = own ? own.get() : prototype.New(&arena);
  EXPECT_TRUE(message->ParsePartialFromString(bytes));
  return meter.peak();
}

// Bytes of a message type that take much memory.
struct Flood {
  std::string bytes;
  std::string repeated;  // the path of the field that they repeat
  std::size_t memory = 0;

  double ratio() const {
    return bytes.empty() ? 0 : static_cast<double>(memory) / static_cast<double>(bytes.size());
  }
};

// One of many elements, by its number.
using Element = std::function<std::string(int)>;

std::string shortestKey(const FieldDescriptor& key, int i) {
  if (key.cpp_type() != FieldDescriptor::CPPTYPE_STRING) {
    return tests::tag(1, 0) + tests::varint(static_cast<std::uint64_t>(i));
  }
  std::string digits;
  for (int rest = i; rest > 0; rest /= 256) {
    digits += static_cast<char>(rest % 256);
  }
  return tests::record(1, digits);
}

// The elements that take the most memory for their bytes: unknown fields, empty messages
// and what has one inside, and entries with the same key or another one in each.
std::vector<std::pair<std::string, Element>> elementsOf(const Descriptor& descriptor) {
  int unknown = 1;
  while (descriptor.FindFieldByNumber(unknown) != nullptr) {
    ++unknown;
  }
  std::vector<std::pair<std::string, Element>> elements = {
      {"unknown", [=](int) { return tests::record(unknown, ""); }}};
  for (int i = 0; i < descriptor.field_count(); ++i) {
    const FieldDescriptor& field = *descriptor.field(i);
    if (!field.is_repeated()) {
      continue;
    }
    const int number = field.number();
    const std::string name(field.name());
    elements.emplace_back(name, [=](int) { return tests::record(number, ""); });
    const Descriptor* type = field.is_map() ? nullptr : field.message_type();
    for (int j = 0; type != nullptr && j < type->field_count(); ++j) {
      if (type->field(j)->cpp_type() == FieldDescriptor::CPPTYPE_MESSAGE) {
        const int inner = type->field(j)->number();
        elements.emplace_back(name,
                              [=](int) { return tests::record(number, tests::record(inner, "")); });
      }
    }
    if (field.is_map()) {
      const FieldDescriptor& key = *field.message_type()->FindFieldByNumber(1);
      elements.emplace_back(name,
                            [=, &key](int) { return tests::record(number, shortestKey(key, 1)); });
      elements.emplace_back(
          name, [=, &key](int n) { return tests::record(number, shortestKey(key, n)); });
    }
  }
  return elements;
}

// The worst flood of fields of that message itself, not of messages inside it.
Flood worstOwnFlood(const Message& prototype, Place place) {
  Flood worst;
  for (const auto& element : elementsOf(*prototype.GetDescriptor())) {
    // Lists and tables grow by leaps: they are fullest just after one. Shorter inputs
    // take little, whatever the ratio.
    for (const int count : {513, 769, 1025, 1537, 2049, 3073, 4097}) {
      Flood flood;
      flood.repeated = element.first;
      for (int i = 0; i < count; ++i) {
        flood.bytes += element.second(i);
      }
      flood.memory = memoryToRead(prototype, flood.bytes, place);
      if (flood.ratio() > worst.ratio()) {
        worst = flood;
      }
    }
  }
  return worst;
}

using Floods = std::map<const Descriptor*, Flood>;

// The worst flood in a message or in any message inside it, as the content of that message.
Flood worstWithin(const Descriptor* descriptor, const Floods& own) {
  const auto known = own.find(descriptor);
  Flood worst = known == own.end() ? Flood() : known->second;
  for (int i = 0; i < descriptor->field_count(); ++i) {
    const FieldDescriptor& field = *descriptor->field(i);
    if (field.cpp_type() != FieldDescriptor::CPPTYPE_MESSAGE) {
      continue;
    }
    const Flood inner = worstWithin(field.message_type(), own);
    if (inner.ratio() > worst.ratio()) {
      worst = {tests::record(field.number(), inner.bytes),
               std::string(field.name()) + "." + inner.repeated, inner.memory};
    }
  }
  return worst;
}

struct Bounds {
  double heap;
  double arena;
};

const Bounds kOthers = {49, 49};
const std::map<std::string, Bounds> bounds = {
    {"Response", {94, 233}},
    {"SessionResult", {94, 233}},
    {"RuleSpecMap", {94, 233}},
    {"ViolationMap", {59, 144}},
    {"AffirmationMap", {59, 144}},
    {"Request", {58, 64}},
    {"CreateViolation", {58, 64}},
    {"CreateAffirmation", {58, 64}},
    {"Violation", {58, 64}},
    {"Affirmation", {58, 64}},
    {"MsgInst", {58, 64}},
    {"ArgList", {58, 64}},
    {"Arg", {58, 64}},
    {"RefList", {58, 64}},
    {"RuleSpec", {55, 60}},
    {"UpsertRuleSpec", {55, 60}},
    {"Links", {55, 60}},
    {"StringList", {55, 60}},
};

// The numbers are those of one release. A bound may be too high by a fifth.
void expectAlmost(double measured, double bound, const std::string& what) {
  std::cout << what << ": " << measured << '\n';
  if (GOOGLE_PROTOBUF_VERSION / 1000 == 3021) {
    EXPECT_LE(measured, bound) << what;
    EXPECT_GE(measured * 1.2, bound) << what;
  }
}

void expectBounds(Place place) {
  Floods own;
  for (const Message* prototype : tests::allMessages()) {
    own[prototype->GetDescriptor()] = worstOwnFlood(*prototype, place);
  }
  for (const Message* prototype : tests::allMessages()) {
    Flood worst = worstWithin(prototype->GetDescriptor(), own);
    worst.memory = memoryToRead(*prototype, worst.bytes, place);
    const std::string name(prototype->GetDescriptor()->name());
    const auto found = bounds.find(name);
    const Bounds& bound = found == bounds.end() ? kOthers : found->second;
    expectAlmost(worst.ratio(), place == Place::kHeap ? bound.heap : bound.arena,
                 name + " by " + worst.repeated);
  }
}

TEST(Memory, OnTheHeapIsAtMostAndAlmostThePromisedBound) {
  expectBounds(Place::kHeap);
}

TEST(Memory, OnAnArenaIsAtMostAndAlmostThePromisedBound) {
  expectBounds(Place::kArena);
}

// For a message and all messages inside it: each list with many empty messages,
// as bytes of the outermost.
std::vector<std::string> listsOfEmptyMessages(const Descriptor& descriptor) {
  constexpr int kMany = 1025;
  std::vector<std::string> lists;
  for (int i = 0; i < descriptor.field_count(); ++i) {
    const FieldDescriptor& field = *descriptor.field(i);
    if (field.cpp_type() != FieldDescriptor::CPPTYPE_MESSAGE) {
      continue;
    }
    if (field.is_repeated() && !field.is_map()) {
      std::string list;
      for (int j = 0; j < kMany; ++j) {
        list += tests::record(field.number(), "");
      }
      lists.push_back(list);
    }
    for (const std::string& inner : listsOfEmptyMessages(*field.message_type())) {
      lists.push_back(tests::record(field.number(), inner));
    }
  }
  return lists;
}

struct NamingOfMissingFields {
  double text = 0;  // per byte of input
  double memory = 0;
};

NamingOfMissingFields worstNamingOfMissingFields(const std::string& type) {
  NamingOfMissingFields worst;
  const auto prototype = tests::newMessage(type);
  for (const std::string& bytes : listsOfEmptyMessages(*prototype->GetDescriptor())) {
    const std::unique_ptr<Message> message(prototype->New());
    EXPECT_TRUE(message->ParsePartialFromString(bytes));
    const auto size = static_cast<double>(bytes.size());
    const HeapMeter meter;
    const std::string text = message->InitializationErrorString();
    worst.text = std::max(worst.text, static_cast<double>(text.size()) / size);
    worst.memory = std::max(worst.memory, static_cast<double>(meter.peak()) / size);
  }
  return worst;
}

TEST(Memory, ForTheNamesOfMissingFieldsIsBounded) {
  struct Case {
    const char* type;
    double log;
    double memory;
  };
  for (const Case& c : {Case{"Request", 26, 137}, Case{"Response", 47, 292}}) {
    const auto worst = worstNamingOfMissingFields(c.type);
    expectAlmost(worst.text, c.log, c.type + std::string(" in the log"));
    if (GOOGLE_PROTOBUF_VERSION / 1000 == 3021) {  // less with later standard libraries
      EXPECT_LE(worst.memory, c.memory) << c.type;
    }
  }
}

// A length of 50,000,000 and one byte of that string.
const char* const kUnbackedString = "12 80 e1 eb 17 61";

// The memory that a way of reading takes for bytes that it refuses.
std::size_t memoryToRefuse(const std::function<bool(Message*)>& read) {
  const HeapMeter meter;
  vok::rulecheck::Resource resource;
  EXPECT_FALSE(read(&resource));
  return meter.peak();
}

// A memory use of 50,000,000 bytes, or of nothing with 3.3.
testing::Matcher<std::size_t> isReserved() {
#if GOOGLE_PROTOBUF_VERSION < 3004000
  return testing::Lt(1024U);
#else
  return testing::Gt(50000000U);
#endif
}

TEST(Memory, ForAStringThatDoesNotArriveIsReservedFromStreamsOnly) {
  const std::string bytes = tests::fromHex(kUnbackedString);
  EXPECT_EQ(bytes.size(), 6U);
  const int size = static_cast<int>(bytes.size());
  EXPECT_LT(
      memoryToRefuse([&](Message* message) { return message->ParsePartialFromString(bytes); }),
      1024U);
  EXPECT_THAT(memoryToRefuse([&](Message* message) {
                google::protobuf::io::ArrayInputStream stream(bytes.data(), size);
                return message->ParsePartialFromZeroCopyStream(&stream);
              }),
              isReserved());
  EXPECT_THAT(memoryToRefuse([&](Message* message) {
                google::protobuf::io::ArrayInputStream stream(bytes.data(), size);
                google::protobuf::io::CodedInputStream in(&stream);
                in.PushLimit(size);
                return message->MergePartialFromCodedStream(&in);
              }),
              isReserved());
}

// Later releases give strings blocks of their own.
#if GOOGLE_PROTOBUF_VERSION < 4022000
TEST(Memory, OfAnInitialBlockOf8KiBHoldsAllGoldenVectors) {
  for (const tests::GoldenVector& vector : tests::goldenVectors()) {
    std::vector<char> block(8192);
    google::protobuf::ArenaOptions options;
    options.initial_block = block.data();
    options.initial_block_size = block.size();
    Arena arena(options);
    Message* message = tests::newMessage(vector.type)->New(&arena);
    ASSERT_TRUE(message->ParseFromString(vector.wire)) << vector.name;
    EXPECT_EQ(arena.SpaceAllocated(), block.size()) << vector.name;
  }
}
#endif

}  // namespace
