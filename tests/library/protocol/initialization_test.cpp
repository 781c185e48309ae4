// SPDX-License-Identifier: Apache-2.0

// Which messages are complete, at every depth. contract.txt lists the required fields.

#include <gmock/gmock.h>
#include <google/protobuf/descriptor.h>
#include <google/protobuf/descriptor.pb.h>
#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "support/messages.h"

namespace {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using Path = std::vector<const FieldDescriptor*>;

// The paths of all fields of a message and of the messages inside it.
std::vector<Path> pathsOf(const google::protobuf::Descriptor& type) {
  std::vector<Path> paths;
  for (int i = 0; i < type.field_count(); ++i) {
    const FieldDescriptor* field = type.field(i);
    if (!type.options().map_entry()) {
      paths.push_back({field});
    }
    if (field->cpp_type() == FieldDescriptor::CPPTYPE_MESSAGE) {
      for (Path& inner : pathsOf(*field->message_type())) {
        inner.insert(inner.begin(), field);
        paths.push_back(std::move(inner));
      }
    }
  }
  return paths;
}

void clear(Message* message, const Path& path) {
  for (const FieldDescriptor* field : path) {
    const auto* reflection = message->GetReflection();
    if (field == path.back()) {
      reflection->ClearField(message, field);
    } else {
      message = field->is_repeated() ? reflection->MutableRepeatedMessage(message, field, 0)
                                     : reflection->MutableMessage(message, field);
    }
  }
}

void expectComplete(const Message& message, bool isComplete) {
  EXPECT_EQ(message.IsInitialized(), isComplete);
  // By reflection, not by generated code.
  EXPECT_EQ(message.InitializationErrorString().empty(), isComplete);
  std::string bytes;
  ASSERT_TRUE(message.SerializePartialToString(&bytes));
  EXPECT_EQ(bytes.size(), message.ByteSizeLong());
  const std::unique_ptr<Message> parsed(message.New());
  EXPECT_EQ(parsed->ParseFromString(bytes), isComplete);
  EXPECT_TRUE(parsed->ParsePartialFromString(bytes));
  EXPECT_EQ(tests::bytesOf(*parsed), tests::bytesOf(message));
// In later releases a packaged runtime ends the process instead.
#if GOOGLE_PROTOBUF_VERSION < 4022000
  try {
    EXPECT_TRUE(message.SerializeToString(&bytes));
  } catch (const google::protobuf::FatalException&) {
    EXPECT_FALSE(isComplete);
  }
#endif
}

TEST(Initialization, NeedsEveryRequiredFieldAtEveryDepthAndNoOther) {
  for (const Message* prototype : tests::allMessages()) {
    const std::string name(prototype->GetDescriptor()->name());
    SCOPED_TRACE(name);
    const auto full = tests::fullMessage(name);
    expectComplete(*full, true);
    for (const Path& path : pathsOf(*prototype->GetDescriptor())) {
      const std::unique_ptr<Message> message(prototype->New());
      message->CopyFrom(*full);
      clear(message.get(), path);
      EXPECT_EQ(message->IsInitialized(), !path.back()->is_required())
          << std::string(path.back()->full_name());
    }
  }
}

TEST(Initialization, DecidesWhetherMessagesParseAndSerialize) {
  for (const Message* prototype : tests::allMessages()) {
    SCOPED_TRACE(std::string(prototype->GetDescriptor()->name()));
    const auto ifRequired = [](const FieldDescriptor& field) {
      return field.is_required() ? 1 : 0;
    };
    std::mt19937_64 random;
    const std::unique_ptr<Message> smallest(prototype->New());
    tests::fillRandomly(ifRequired, &random, smallest.get());
    expectComplete(*smallest, true);
    const auto* type = prototype->GetDescriptor();
    for (int i = 0; i < type->field_count(); ++i) {
      const std::unique_ptr<Message> message(prototype->New());
      message->CopyFrom(*smallest);
      message->GetReflection()->ClearField(message.get(), type->field(i));
      expectComplete(*message, !type->field(i)->is_required());
    }
  }
}

// From a Response down to a Resource in the value of a map, and without a session.
TEST(Initialization, NamesMissingFieldsByTheirPaths) {
  const auto response = tests::parse<vok::rulecheck::Response>(
      "type: SESSION_RESULT session_result { specs_violated { hashmap { key: 'k' "
      "value { key: 'k' full_name: 'n' description { } } } } }");
  EXPECT_THAT(
      response.InitializationErrorString(),
      testing::AllOf(
          testing::HasSubstr("session_result.session"),
          testing::HasSubstr("session_result.specs_violated.hashmap[0].value.description.scheme")));
  expectComplete(response, false);
}

}  // namespace
