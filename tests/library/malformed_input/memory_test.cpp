// SPDX-License-Identifier: Apache-2.0

// How much memory malicious bytes can take. docs/protocol.md promises these numbers.

#include <gmock/gmock.h>
#include <google/protobuf/arena.h>
#include <google/protobuf/descriptor.h>
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <string>
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
using tests::record;

// The most memory that parsing those bytes takes, the message included, for each byte.
using Measure = double (*)(const Message& prototype, const std::string& bytes);

double onTheHeap(const Message& prototype, const std::string& bytes) {
  const HeapMeter meter;
  const std::unique_ptr<Message> message(prototype.New());
  EXPECT_TRUE(message->ParsePartialFromString(bytes));
  return static_cast<double>(meter.peak()) / static_cast<double>(bytes.size());
}

double onAnArena(const Message& prototype, const std::string& bytes) {
  const HeapMeter meter;
  Arena arena;
  EXPECT_TRUE(prototype.New(&arena)->ParsePartialFromString(bytes));
  return static_cast<double>(meter.peak()) / static_cast<double>(bytes.size());
}

std::string shortestKey(const FieldDescriptor& key, int i) {
  if (key.cpp_type() != FieldDescriptor::CPPTYPE_STRING) {
    return tests::tag(1, 0) + tests::varint(static_cast<std::uint64_t>(i));
  }
  std::string digits;
  for (int rest = i; rest > 0; rest /= 256) {
    digits += static_cast<char>(rest % 256);
  }
  return record(1, digits);
}

// One of many elements, by its number.
using Element = std::function<std::string(int)>;

// The elements that take the most memory for their bytes: unknown fields, empty messages
// and what has one inside, and entries with the same key or another one in each.
std::vector<Element> elementsOf(const Descriptor& type) {
  int unknown = 1;
  while (type.FindFieldByNumber(unknown) != nullptr) {
    ++unknown;
  }
  std::vector<Element> elements = {[=](int) { return record(unknown, ""); }};
  for (int i = 0; i < type.field_count(); ++i) {
    const FieldDescriptor& field = *type.field(i);
    const int number = field.number();
    if (!field.is_repeated()) {
      continue;
    }
    elements.emplace_back([=](int) { return record(number, ""); });
    if (field.is_map()) {
      const FieldDescriptor& key = *field.message_type()->FindFieldByNumber(1);
      elements.emplace_back([=, &key](int) { return record(number, shortestKey(key, 1)); });
      elements.emplace_back([=, &key](int n) { return record(number, shortestKey(key, n)); });
      continue;
    }
    for (int j = 0; field.message_type() != nullptr && j < field.message_type()->field_count();
         ++j) {
      const FieldDescriptor& inner = *field.message_type()->field(j);
      if (inner.cpp_type() == FieldDescriptor::CPPTYPE_MESSAGE) {
        const std::string content = record(inner.number(), "");
        elements.emplace_back([=](int) { return record(number, content); });
      }
    }
  }
  return elements;
}

std::string repeated(const Element& element, int count) {
  std::string bytes;
  for (int i = 0; i < count; ++i) {
    bytes += element(i);
  }
  return bytes;
}

// The most memory by fields of that message itself, not of messages inside it. Lists and
// tables grow in steps, and take the most just after one. Shorter inputs take little memory.
double worstOfItself(const Message& prototype, Measure measure) {
  double worst = 0;
  for (const Element& element : elementsOf(*prototype.GetDescriptor())) {
    for (const int count : {513, 769, 1025, 1537, 2049, 3073, 4097}) {
      worst = std::max(worst, measure(prototype, repeated(element, count)));
    }
  }
  return worst;
}

using Worst = std::map<const Descriptor*, double>;

// The most in a message or in any message inside it: the tags and lengths around that
// make no difference.
double worstWithin(const Descriptor& type, const Worst& ofItself) {
  const auto found = ofItself.find(&type);  // not there for a map's entry
  double worst = found == ofItself.end() ? 0 : found->second;
  for (int i = 0; i < type.field_count(); ++i) {
    if (type.field(i)->cpp_type() == FieldDescriptor::CPPTYPE_MESSAGE) {
      worst = std::max(worst, worstWithin(*type.field(i)->message_type(), ofItself));
    }
  }
  return worst;
}

// The numbers are those of one release. A bound may be too high by a fifth.
void expectAlmost(double measured, double bound, const std::string& what) {
  if (GOOGLE_PROTOBUF_VERSION / 1000 == 3021) {
    EXPECT_LE(measured, bound) << what;
    EXPECT_GE(measured * 1.2, bound) << what;
  }
}

struct Bounds {
  std::vector<std::string> types;
  double heap;
  double arena;
};

const Bounds bounds[] = {
    {{"Response", "SessionResult", "RuleSpecMap"}, 94, 233},
    {{"ViolationMap", "AffirmationMap"}, 59, 144},
    {{"Request", "CreateViolation", "CreateAffirmation", "Violation", "Affirmation", "MsgInst",
      "ArgList", "Arg", "RefList"},
     58,
     64},
    {{"RuleSpec", "UpsertRuleSpec", "Links", "StringList"}, 55, 60},
    {{}, 49, 49},  // all others
};

const Bounds& boundsOf(const std::string& name) {
  return *std::find_if(std::begin(bounds), std::end(bounds) - 1, [&](const Bounds& b) {
    return std::find(b.types.begin(), b.types.end(), name) != b.types.end();
  });
}

TEST(Memory, NearlyReachesTheDocumentedBound) {
  for (const Measure measure : {&onTheHeap, &onAnArena}) {
    Worst ofItself;
    for (const Message* prototype : tests::allMessages()) {
      ofItself[prototype->GetDescriptor()] = worstOfItself(*prototype, measure);
    }
    for (const auto& [type, unused] : ofItself) {
      const Bounds& bound = boundsOf(std::string(type->name()));
      expectAlmost(worstWithin(*type, ofItself), measure == onTheHeap ? bound.heap : bound.arena,
                   std::string(type->name()));
    }
  }
}

// For a message and all messages inside it: each list with many empty messages,
// as bytes of the outermost.
std::vector<std::string> listsOfEmptyMessages(const Descriptor& type) {
  std::vector<std::string> lists;
  for (int i = 0; i < type.field_count(); ++i) {
    const FieldDescriptor& field = *type.field(i);
    if (field.cpp_type() != FieldDescriptor::CPPTYPE_MESSAGE) {
      continue;
    }
    if (field.is_repeated() && !field.is_map()) {
      lists.push_back(repeated([&](int) { return record(field.number(), ""); }, 1025));
    }
    for (const std::string& inner : listsOfEmptyMessages(*field.message_type())) {
      lists.push_back(record(field.number(), inner));
    }
  }
  return lists;
}

TEST(Memory, ForNamesOfMissingFieldsIsBounded) {
  struct Case {
    const char* type;
    double log;
    double memory;
  };
  for (const Case& c : {Case{"Request", 26, 137}, Case{"Response", 47, 292}}) {
    double longest = 0;
    double most = 0;
    const auto message = tests::newMessage(c.type);
    for (const std::string& bytes : listsOfEmptyMessages(*message->GetDescriptor())) {
      EXPECT_TRUE(message->ParsePartialFromString(bytes));
      const auto size = static_cast<double>(bytes.size());
      const HeapMeter meter;
      const std::string text = message->InitializationErrorString();
      longest = std::max(longest, static_cast<double>(text.size()) / size);
      most = std::max(most, static_cast<double>(meter.peak()) / size);
    }
    expectAlmost(longest, c.log, c.type);
    if (GOOGLE_PROTOBUF_VERSION / 1000 == 3021) {  // less with later standard libraries
      EXPECT_LE(most, c.memory) << c.type;
    }
  }
}

// A string of 50,000,000 bytes is truncated after the first. 3.3 reserves nothing.
TEST(Memory, IsReservedForATruncatedStringFromStreamsOnly) {
  const std::string bytes = tests::fromHex("12 80 e1 eb 17 61");
  const auto fromStream = [&](bool isLimited) {
    vok::rulecheck::Resource resource;
    google::protobuf::io::ArrayInputStream stream(bytes.data(), 6);
    google::protobuf::io::CodedInputStream in(&stream);
    if (isLimited) {
      in.PushLimit(6);
    }
    return resource.MergePartialFromCodedStream(&in);
  };
  for (const bool isLimited : {false, true}) {
    const HeapMeter meter;
    EXPECT_FALSE(fromStream(isLimited));
    EXPECT_EQ(meter.peak() > 50000000, GOOGLE_PROTOBUF_VERSION >= 3004000) << isLimited;
  }
  const HeapMeter meter;
  EXPECT_FALSE(vok::rulecheck::Resource().ParsePartialFromString(bytes));
  EXPECT_LT(meter.peak(), 1024u);
}

// Later releases give strings blocks of their own.
#if GOOGLE_PROTOBUF_VERSION < 4022000
TEST(Memory, InitialBlockOf8KiBHoldsEachGoldenVector) {
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
