// How much memory hostile bytes can take: compares the numbers of docs/protocol.md with
// measurements.

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
#include <regex>
#include <string>
#include <vector>

#include "malformed_input/amplification.h"
#include "malformed_input/heap_meter.h"
#include "malformed_input/page.h"
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

// The page's numbers are those of one release.
bool isReleaseOfThePage() {
  return GOOGLE_PROTOBUF_VERSION / 1000 == 3021;
}

// The section without the line breaks of its sentences.
std::string section() {
  std::string text;
  for (const std::string& line : tests::linesOfSection("What a message takes in memory")) {
    text += line.rfind("  ", 0) == 0 ? line.substr(1) : "\n" + line;
  }
  return text;
}

std::vector<std::smatch> matches(const std::string& text, const std::string& pattern) {
  const std::regex regex(pattern);
  return {std::sregex_iterator(text.begin(), text.end(), regex), std::sregex_iterator()};
}

// A bound may be too high by a fifth.
void expectAlmost(double measured, double bound, const std::string& what) {
  std::cout << what << ": " << measured << '\n';
  if (isReleaseOfThePage()) {
    EXPECT_LE(measured, bound) << what;
    EXPECT_GE(measured * 1.2, bound) << what;
  }
}

std::map<std::string, std::map<Place, double>> boundsOfThePage() {
  const std::string text = section();
  std::map<std::string, std::map<Place, double>> bounds;
  for (const std::smatch& row : matches(text, R"(\| ([\w`, ]+) \| (\d+) \| (\d+) \|)")) {
    const std::map<Place, double> numbers = {{Place::kHeap, std::stod(row[2])},
                                             {Place::kArena, std::stod(row[3])}};
    const std::string messages = row[1];
    if (messages == "all others") {
      for (const Message* prototype : tests::allMessages()) {
        bounds.emplace(prototype->GetDescriptor()->name(), numbers);
      }
    }
    for (const std::smatch& name : matches(messages, "`(\\w+)`")) {
      EXPECT_TRUE(bounds.emplace(name[1], numbers).second) << name[1];
    }
  }
  return bounds;
}

void expectBoundsOfThePage(Place place) {
  auto bounds = boundsOfThePage();
  EXPECT_EQ(bounds.size(), tests::allMessages().size());
  for (const auto& worst : tests::worstFloods(place)) {
    expectAlmost(worst.second.ratio(), bounds[worst.first][place],
                 worst.first + " by " + worst.second.repeated);
  }
}

TEST(Memory, OnTheHeapIsAtMostAndAlmostWhatThePageSays) {
  expectBoundsOfThePage(Place::kHeap);
}

TEST(Memory, OfARequestFollowsFromTheTable) {
  const int bound = static_cast<int>(boundsOfThePage()["Request"][Place::kHeap]);
  EXPECT_THAT(section(), testing::HasSubstr("a limit of 1 MiB for a `Request` means " +
                                            std::to_string(bound) + " MiB"));
}

TEST(Memory, OnAnArenaIsAtMostAndAlmostWhatThePageSays) {
  expectBoundsOfThePage(Place::kArena);
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

TEST(Memory, ForTheNamesOfMissingFieldsIsWhatThePageSays) {
  const std::string text = section();
  const auto promises =
      matches(text, R"(`(\w+)` up to (\d+) bytes in the log and (\d+) in memory)");
  EXPECT_EQ(promises.size(), 2U);
  for (const std::smatch& promise : promises) {
    const auto worst = worstNamingOfMissingFields(promise[1]);
    expectAlmost(worst.text, std::stod(promise[2]), promise[1].str() + " in the log");
    if (isReleaseOfThePage()) {  // less with later versions of the standard library
      EXPECT_LE(worst.memory, std::stod(promise[3])) << promise[1];
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
