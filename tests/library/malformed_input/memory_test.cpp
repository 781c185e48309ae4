// How much memory hostile bytes can take. docs/protocol.md promises these numbers.

#include <gmock/gmock.h>
#include <google/protobuf/arena.h>
#include <google/protobuf/descriptor.h>
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "malformed_input/amplification.h"
#include "malformed_input/heap_meter.h"
#include "parse_and_serialize.h"
#include "support/messages.h"
#include "vectors/golden_vectors.h"

namespace {

using google::protobuf::Arena;
using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using tests::HeapMeter;
using tests::Place;

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
  for (const auto& worst : tests::worstFloods(place)) {
    const auto found = bounds.find(worst.first);
    const Bounds& bound = found == bounds.end() ? kOthers : found->second;
    expectAlmost(worst.second.ratio(), place == Place::kHeap ? bound.heap : bound.arena,
                 worst.first + " by " + worst.second.repeated);
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
