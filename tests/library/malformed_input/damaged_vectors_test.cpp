// SPDX-License-Identifier: Apache-2.0

// Every golden vector cut at every byte, and with every single bit flipped.

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <string>

#include "parse_and_serialize.h"
#include "support/messages.h"
#include "vectors/golden_vectors.h"

namespace {

// After a failure a message may hold anything, but it can be copied and parsed into again.
void expectRefusedOrAFixedPoint(const tests::GoldenVector& vector, const std::string& damaged) {
  const auto message = tests::newMessage(vector.type);
  if (tests::writtenAgain(*message, damaged) == "refused") {
    EXPECT_FALSE(message->ParsePartialFromString(damaged));
    const std::unique_ptr<google::protobuf::Message> copy(message->New());
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

}  // namespace
