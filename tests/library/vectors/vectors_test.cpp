// SPDX-License-Identifier: Apache-2.0

// What holds for every golden vector, and that every message has one.

#include <gmock/gmock.h>
#include <google/protobuf/descriptor.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "support/messages.h"
#include "vectors/golden_vectors.h"

namespace {

using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using tests::GoldenVector;
using tests::goldenVectors;

TEST(Vectors, RoundTripByteForByte) {
  for (const GoldenVector& vector : goldenVectors()) {
    const auto message = tests::newMessage(vector.type);
    ASSERT_TRUE(message->ParseFromString(vector.wire)) << vector.name;
    EXPECT_EQ(message->ByteSizeLong(), vector.wire.size()) << vector.name;
    EXPECT_EQ(tests::toHex(tests::bytesOf(*message)), tests::toHex(vector.wire)) << vector.name;
  }
}

TEST(Vectors, GiveTheSameTextAgain) {
  for (const GoldenVector& vector : goldenVectors()) {
    const auto message = tests::newMessage(vector.type);
    ASSERT_TRUE(message->ParseFromString(vector.wire)) << vector.name;
    EXPECT_EQ(tests::textOf(*message), vector.text) << vector.name;
  }
}

TEST(Vectors, AreWhatTheirTextEncodesTo) {
  for (const GoldenVector& vector : goldenVectors()) {
    const auto message = tests::newMessage(vector.type);
    tests::fill(vector.text, message.get());
    EXPECT_EQ(tests::toHex(tests::bytesOf(*message)), tests::toHex(vector.wire)) << vector.name;
  }
}

// 3.3 also accepts those that are cut between the fields of a message inside.
TEST(Vectors, AreRejectedWhenCutWithinATopLevelField) {
  for (const GoldenVector& vector : goldenVectors()) {
    const auto boundaries = tests::fieldBoundaries(vector.wire);
    for (std::size_t length = 0; length < vector.wire.size(); ++length) {
      const bool betweenFields =
          std::find(boundaries.begin(), boundaries.end(), length) != boundaries.end();
      if (GOOGLE_PROTOBUF_VERSION < 3004000 && !betweenFields) {
        continue;
      }
      EXPECT_EQ(
          tests::newMessage(vector.type)->ParsePartialFromString(vector.wire.substr(0, length)),
          betweenFields)
          << vector.name << " cut to " << length << " bytes";
    }
  }
}

void collectSetFields(const Message& message, std::set<std::string>* names) {
  std::vector<const FieldDescriptor*> fields;
  message.GetReflection()->ListFields(message, &fields);
  for (const FieldDescriptor* field : fields) {
    names->emplace(field->full_name());
    if (field->cpp_type() != FieldDescriptor::CPPTYPE_MESSAGE) {
      continue;
    }
    if (!field->is_repeated()) {
      collectSetFields(message.GetReflection()->GetMessage(message, field), names);
      continue;
    }
    for (int i = 0; i < message.GetReflection()->FieldSize(message, field); ++i) {
      collectSetFields(message.GetReflection()->GetRepeatedMessage(message, field, i), names);
    }
  }
}

std::set<std::string> fieldsOf(const Descriptor& descriptor) {
  std::set<std::string> names;
  for (int i = 0; i < descriptor.field_count(); ++i) {
    names.emplace(descriptor.field(i)->full_name());
  }
  return names;
}

TEST(Vectors, CalledEveryFieldExistForEveryMessageAndSetEveryField) {
  for (const Message* prototype : tests::allMessages()) {
    const std::string name = std::string(prototype->GetDescriptor()->name()) + ".every_field";
    const auto vector = std::find_if(goldenVectors().begin(), goldenVectors().end(),
                                     [&name](const GoldenVector& v) { return v.name == name; });
    ASSERT_NE(vector, goldenVectors().end()) << name;
    const auto message = tests::newMessage(vector->type);
    ASSERT_TRUE(message->ParseFromString(vector->wire)) << name;
    std::set<std::string> names;
    collectSetFields(*message, &names);
    EXPECT_THAT(names, testing::IsSupersetOf(fieldsOf(*prototype->GetDescriptor()))) << name;
  }
}

}  // namespace
