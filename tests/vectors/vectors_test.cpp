// The golden vectors: a folder per case with the bytes of a message, its text
// form and a line on what it shows.

#include <gmock/gmock.h>
#include <google/protobuf/descriptor.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "support/messages.h"

namespace {

using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::Message;

struct Vector {
  std::string name;
  std::string type;
  std::string about;
  std::string text;
  std::string wire;
};

std::string contentOf(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    throw std::runtime_error("cannot read " + path.string());
  }
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

const std::vector<Vector>& vectors() {
  static const std::vector<Vector> all = [] {
    std::vector<Vector> found;
    for (const auto& entry : std::filesystem::directory_iterator(VECTORS_DIR)) {
      const std::string name = entry.path().filename().string();
      found.push_back({name, name.substr(0, name.find('.')), contentOf(entry.path() / "about.txt"),
                       contentOf(entry.path() / "text.txtpb"),
                       contentOf(entry.path() / "wire.bin")});
    }
    std::sort(found.begin(), found.end(),
              [](const Vector& a, const Vector& b) { return a.name < b.name; });
    return found;
  }();
  return all;
}

TEST(Vectors, TellInOneLineWhatTheyShow) {
  for (const Vector& vector : vectors()) {
    EXPECT_EQ(std::count(vector.about.begin(), vector.about.end(), '\n'), 1) << vector.name;
    EXPECT_EQ(vector.about.back(), '\n') << vector.name;
  }
}

TEST(Vectors, RoundTripByteForByte) {
  for (const Vector& vector : vectors()) {
    const auto message = tests::newMessage(vector.type);
    ASSERT_TRUE(message->ParseFromString(vector.wire)) << vector.name;
    EXPECT_EQ(message->ByteSizeLong(), vector.wire.size()) << vector.name;
    EXPECT_EQ(tests::toHex(tests::bytesOf(*message)), tests::toHex(vector.wire)) << vector.name;
  }
}

TEST(Vectors, GiveTheSameTextAgain) {
  for (const Vector& vector : vectors()) {
    const auto message = tests::newMessage(vector.type);
    ASSERT_TRUE(message->ParseFromString(vector.wire)) << vector.name;
    EXPECT_EQ(tests::textOf(*message), vector.text) << vector.name;
  }
}

TEST(Vectors, AreWhatTheirTextEncodesTo) {
  for (const Vector& vector : vectors()) {
    const auto message = tests::newMessage(vector.type);
    tests::fill(vector.text, message.get());
    EXPECT_EQ(tests::toHex(tests::bytesOf(*message)), tests::toHex(vector.wire)) << vector.name;
  }
}

TEST(Vectors, AreRejectedWhenCutWithinATopLevelField) {
  for (const Vector& vector : vectors()) {
    const auto boundaries = tests::fieldBoundaries(vector.wire);
    for (std::size_t length = 0; length < vector.wire.size(); ++length) {
      const bool betweenFields =
          std::find(boundaries.begin(), boundaries.end(), length) != boundaries.end();
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
    const auto vector = std::find_if(vectors().begin(), vectors().end(),
                                     [&name](const Vector& v) { return v.name == name; });
    ASSERT_NE(vector, vectors().end()) << name;
    const auto message = tests::newMessage(vector->type);
    ASSERT_TRUE(message->ParseFromString(vector->wire)) << name;
    std::set<std::string> names;
    collectSetFields(*message, &names);
    EXPECT_THAT(names, testing::IsSupersetOf(fieldsOf(*prototype->GetDescriptor()))) << name;
  }
}

}  // namespace
