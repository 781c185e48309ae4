// SPDX-License-Identifier: Apache-2.0

// Every golden vector cut at every byte, and with every single bit flipped.

#include <gtest/gtest.h>

#include <cstddef>
#include <iostream>
#include <memory>
#include <string>

#include "parse_and_serialize.h"
#include "support/messages.h"
#include "vectors/golden_vectors.h"

namespace {

using google::protobuf::Message;
using tests::GoldenVector;
using tests::goldenVectors;

// How many inputs were tried, and how many of them could be read.
class Count {
 public:
  explicit Count(const char* things) : things_(things) {}
  ~Count() { std::cout << tried_ << ' ' << things_ << ", " << read_ << " of them read\n"; }
  Count(const Count&) = delete;
  Count& operator=(const Count&) = delete;

  void add(bool isRead) {
    ++tried_;
    read_ += isRead ? 1 : 0;
  }
  std::size_t tried() const { return tried_; }

 private:
  const char* things_;
  std::size_t tried_ = 0;
  std::size_t read_ = 0;
};

std::size_t bytesOfAllVectors() {
  std::size_t bytes = 0;
  for (const GoldenVector& vector : goldenVectors()) {
    bytes += vector.wire.size();
  }
  return bytes;
}

std::string withBitFlipped(std::string bytes, std::size_t bit) {
  bytes[bit / 8] = static_cast<char>(bytes[bit / 8] ^ (1 << bit % 8));
  return bytes;
}

TEST(DamagedVectors, CutAtEveryByteAreRefusedOrAFixedPoint) {
  Count truncations("truncations");
  for (const GoldenVector& vector : goldenVectors()) {
    const auto prototype = tests::newMessage(vector.type);
    for (std::size_t size = 0; size < vector.wire.size(); ++size) {
      SCOPED_TRACE(vector.name + " cut to " + std::to_string(size) + " bytes");
      truncations.add(tests::writtenAgain(*prototype, vector.wire.substr(0, size)) != "refused");
    }
  }
  EXPECT_EQ(truncations.tried(), bytesOfAllVectors());
}

TEST(DamagedVectors, WithAnyBitFlippedAreRefusedOrAFixedPoint) {
  Count flips("bit flips");
  for (const GoldenVector& vector : goldenVectors()) {
    const auto prototype = tests::newMessage(vector.type);
    for (std::size_t bit = 0; bit < 8 * vector.wire.size(); ++bit) {
      SCOPED_TRACE(vector.name + " with bit " + std::to_string(bit) + " flipped");
      flips.add(tests::writtenAgain(*prototype, withBitFlipped(vector.wire, bit)) != "refused");
    }
  }
  EXPECT_EQ(flips.tried(), 8 * bytesOfAllVectors());
}

// After a failure a message may hold anything, but it is a message still: it can
// be written, copied and read into again.
TEST(DamagedVectors, LeaveAMessageThatCanBeUsedAgain) {
  for (const GoldenVector& vector : goldenVectors()) {
    const auto message = tests::newMessage(vector.type);
    for (std::size_t bit = 0; bit < 8 * vector.wire.size(); ++bit) {
      if (message->ParsePartialFromString(withBitFlipped(vector.wire, bit))) {
        continue;
      }
      EXPECT_EQ(tests::bytesOf(*message).size(), message->ByteSizeLong());
      const std::unique_ptr<Message> copy(message->New());
      copy->CopyFrom(*message);
      EXPECT_EQ(tests::bytesOf(*copy), tests::bytesOf(*message)) << vector.name << ", bit " << bit;
      ASSERT_TRUE(message->ParseFromString(vector.wire)) << vector.name << ", bit " << bit;
      EXPECT_EQ(tests::bytesOf(*message), vector.wire) << vector.name << ", bit " << bit;
    }
  }
}

}  // namespace
