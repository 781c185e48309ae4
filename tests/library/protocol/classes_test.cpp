// SPDX-License-Identifier: Apache-2.0

// What every message class does with a message whose fields are all set: copies,
// assignment, swap, merges, messages of another class. The golden vectors have one
// such message of each type.

#include <google/protobuf/arena.h>
#include <google/protobuf/descriptor.h>
#include <google/protobuf/dynamic_message.h>
#include <google/protobuf/io/coded_stream.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "support/message_types.h"
#include "support/messages.h"
#include "vectors/golden_vectors.h"

// A friend of the stream's, in all releases, and the only access to that default.
namespace google {
namespace protobuf {
namespace internal {
void MapTestForceDeterministic() {
  io::CodedOutputStream::SetDefaultSerializationDeterministic();
}
}  // namespace internal
}  // namespace protobuf
}  // namespace google

namespace {

using google::protobuf::DynamicMessageFactory;
using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using tests::bytesOf;

// All fields of a type and an unknown one, as bytes.
std::string everyField(const std::string& type) {
  return tests::everyField(type) + tests::fromHex("a0 06 05");
}

template <typename Type>
struct OfOneType {
  const std::string name{Type::descriptor()->name()};
  const std::string bytes = everyField(name);
  Type message;

  OfOneType() { EXPECT_TRUE(message.ParseFromString(bytes)) << name; }

  void isCopiedAssignedAndSwapped() const {
    Type copy(message);
    EXPECT_EQ(bytesOf(copy), bytes) << name;
    Type other;
    other = message;
    EXPECT_EQ(bytesOf(other), bytes) << name;
    Type empty;
    empty.Swap(&other);
    EXPECT_EQ(bytesOf(empty), bytes) << name;
    EXPECT_EQ(bytesOf(other), "") << name;
    const Type& alias = copy;
    copy = alias;
    copy.CopyFrom(alias);
    copy.Swap(&copy);
    EXPECT_EQ(bytesOf(copy), bytes) << name;
  }

  void isCleared() const {
    Type copy(message);
    copy.Clear();
    EXPECT_EQ(bytesOf(copy), "") << name;
    EXPECT_EQ(tests::textOf(copy), "") << name;
    EXPECT_EQ(copy.IsInitialized(), Type().IsInitialized()) << name;
    copy.MergeFrom(message);
    EXPECT_EQ(bytesOf(copy), bytes) << name;
  }

  void takesADynamicMessage() const {
    DynamicMessageFactory factory;
    const std::unique_ptr<Message> dynamic(factory.GetPrototype(Type::descriptor())->New());
    ASSERT_TRUE(dynamic->ParseFromString(bytes)) << name;
    Type copy;
    copy.CopyFrom(*dynamic);
    EXPECT_EQ(bytesOf(copy), bytes) << name;
    copy.MergeFrom(*dynamic);
    Type expected(message);
    expected.MergeFrom(message);
    EXPECT_EQ(bytesOf(copy), bytesOf(expected)) << name;
  }
};

template <typename... Types>
void checkAll(tests::TypeList<Types...> /*types*/) {
  (OfOneType<Types>().isCopiedAssignedAndSwapped(), ...);
  (OfOneType<Types>().isCleared(), ...);
  (OfOneType<Types>().takesADynamicMessage(), ...);
}

TEST(Classes, CopyAssignSwapClearAndMergeEveryField) {
  checkAll(tests::MessageTypes());
}

TEST(MapEntries, OfAnArenaBelongToItAndKeepTheirFields) {
  int maps = 0;
  for (const Message* prototype : tests::allMessages()) {
    const auto* type = prototype->GetDescriptor();
    const std::unique_ptr<Message> message(prototype->New());
    ASSERT_TRUE(message->ParseFromString(everyField(std::string(type->name()))));
    for (int i = 0; i < type->field_count(); ++i) {
      const FieldDescriptor* field = type->field(i);
      if (field->is_map()) {
        ++maps;
        const Message& entry = message->GetReflection()->GetRepeatedMessage(*message, field, 0);
        google::protobuf::Arena arena;
        Message* copy = entry.New(&arena);
        EXPECT_EQ(copy->GetArena(), &arena) << std::string(field->full_name());
        copy->CopyFrom(entry);
        EXPECT_EQ(bytesOf(*copy), bytesOf(entry)) << std::string(field->full_name());
        EXPECT_NE(bytesOf(*copy), "") << std::string(field->full_name());
      }
    }
  }
  EXPECT_EQ(maps, 9);
}

// CTest runs each case in a process of its own, so the default stays off elsewhere.
TEST(Maps, AreWrittenInTheOrderOfTheirKeysIfThatIsTheRuntimesDefault) {
  vok::rulecheck::CreateViolation message;
  for (int key = 0; key < 100; ++key) {
    (*message.mutable_dynamic_category_values())[std::to_string(key)] = "value";
  }
  EXPECT_FALSE(google::protobuf::io::CodedOutputStream::IsDefaultSerializationDeterministic());
  google::protobuf::internal::MapTestForceDeterministic();
  EXPECT_EQ(message.SerializePartialAsString(), bytesOf(message));
}

}  // namespace
