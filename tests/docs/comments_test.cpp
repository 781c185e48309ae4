// SPDX-License-Identifier: Apache-2.0

// Each declaration of the schema has a comment that is a sentence.

#include <gmock/gmock.h>
#include <google/protobuf/descriptor.h>
#include <google/protobuf/descriptor.pb.h>
#include <gtest/gtest.h>

#include <cctype>
#include <fstream>
#include <string>
#include <vector>

namespace {

using google::protobuf::Descriptor;
using google::protobuf::DescriptorPool;
using google::protobuf::EnumDescriptor;
using google::protobuf::FileDescriptor;
using google::protobuf::SourceLocation;

struct Declaration {
  std::string name;
  std::string comment;
};

class Declarations {
 public:
  explicit Declarations(const FileDescriptor& file) {
    for (int i = 0; i < file.message_type_count(); ++i) {
      addMessage(*file.message_type(i));
    }
    for (int i = 0; i < file.enum_type_count(); ++i) {
      addEnum(*file.enum_type(i));
    }
    for (int i = 0; i < file.service_count(); ++i) {
      add(*file.service(i));
      for (int j = 0; j < file.service(i)->method_count(); ++j) {
        add(*file.service(i)->method(j));
      }
    }
  }

  const std::vector<Declaration>& all() const { return all_; }

 private:
  template <typename AnyDescriptor>
  void add(const AnyDescriptor& descriptor) {
    SourceLocation location;
    const bool found = descriptor.GetSourceLocation(&location);
    all_.push_back(
        {std::string(descriptor.full_name()), found ? location.leading_comments : std::string()});
  }

  void addEnum(const EnumDescriptor& type) {
    add(type);
    for (int i = 0; i < type.value_count(); ++i) {
      add(*type.value(i));
    }
  }

  // The entry of a map is no declaration of the schema's.
  void addMessage(const Descriptor& message) {
    add(message);
    for (int i = 0; i < message.field_count(); ++i) {
      add(*message.field(i));
    }
    for (int i = 0; i < message.enum_type_count(); ++i) {
      addEnum(*message.enum_type(i));
    }
    for (int i = 0; i < message.nested_type_count(); ++i) {
      if (!message.nested_type(i)->options().map_entry()) {
        addMessage(*message.nested_type(i));
      }
    }
  }

  std::vector<Declaration> all_;
};

// Begins like a sentence and ends with a full stop.
bool isSentence(const std::string& comment) {
  const auto first = comment.find_first_not_of(" \n");
  const auto last = comment.find_last_not_of(" \n");
  return first != std::string::npos && std::isupper(static_cast<unsigned char>(comment[first])) &&
         comment[last] == '.' && last - first >= 5;
}

TEST(Comments, AreSentencesOnEachMessageFieldValueAndMethod) {
  google::protobuf::FileDescriptorSet set;
  std::ifstream in(SCHEMA_WITH_COMMENTS, std::ios::binary);
  ASSERT_TRUE(set.ParseFromIstream(&in));
  ASSERT_EQ(set.file_size(), 1);
  DescriptorPool pool;
  const FileDescriptor* file = pool.BuildFile(set.file(0));
  ASSERT_NE(file, nullptr);
  const Declarations declarations(*file);
  EXPECT_FALSE(declarations.all().empty());
  for (const Declaration& declaration : declarations.all()) {
    EXPECT_TRUE(isSentence(declaration.comment))
        << declaration.name << " has no sentence: " << declaration.comment;
  }
}

}  // namespace
