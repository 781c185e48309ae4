// SPDX-License-Identifier: Apache-2.0

// What holds for every golden vector, and that every message has one.

#include <google/protobuf/descriptor.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "support/messages.h"
#include "vectors/golden_vectors.h"

namespace {

using google::protobuf::Message;

TEST(Vectors, RoundTripByteForByteAndAsText) {
  for (const tests::GoldenVector& vector : tests::goldenVectors()) {
    SCOPED_TRACE(vector.name);
    const auto message = tests::newMessage(vector.type);
    ASSERT_TRUE(message->ParseFromString(vector.wire));
    EXPECT_EQ(message->ByteSizeLong(), vector.wire.size());
    EXPECT_EQ(tests::toHex(tests::bytesOf(*message)), tests::toHex(vector.wire));
    EXPECT_EQ(tests::textOf(*message), vector.text);
    const auto fromText = tests::newMessage(vector.type);
    tests::fill(vector.text, fromText.get());
    EXPECT_EQ(tests::toHex(tests::bytesOf(*fromText)), tests::toHex(vector.wire));
  }
}

TEST(Vectors, SetEveryFieldOfEveryMessage) {
  std::set<std::string> missing;
  for (const Message* prototype : tests::allMessages()) {
    missing.emplace(prototype->GetDescriptor()->name());
  }
  for (const tests::GoldenVector& vector : tests::goldenVectors()) {
    const auto message = tests::newMessage(vector.type);
    ASSERT_TRUE(message->ParseFromString(vector.wire));
    std::vector<const google::protobuf::FieldDescriptor*> fields;
    message->GetReflection()->ListFields(*message, &fields);
    if (static_cast<int>(fields.size()) == message->GetDescriptor()->field_count()) {
      missing.erase(vector.type);
    }
  }
  EXPECT_EQ(missing, std::set<std::string>());
}

}  // namespace
