// SPDX-License-Identifier: Apache-2.0

// What every message class offers: copies, assignment, swap, merges, messages of another
// class, presence, defaults, arenas, registration.

#include <google/protobuf/arena.h>
#include <google/protobuf/descriptor.h>
#include <google/protobuf/descriptor.pb.h>
#include <google/protobuf/dynamic_message.h>
#include <google/protobuf/io/coded_stream.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "support/messages.h"

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

using google::protobuf::Arena;
using google::protobuf::Message;
using tests::bytesOf;
using namespace vok::rulecheck;

template <typename Type>
void expectMessageClass() {
  const std::string name(Type::descriptor()->name());
  SCOPED_TRACE(name);
  const std::string bytes = bytesOf(*tests::fullMessage(name)) + tests::fromHex("a0 06 05");
  Type message;
  EXPECT_EQ(bytesOf(message) + tests::textOf(message), "");
  ASSERT_TRUE(message.ParseFromString(bytes));

  Type copy(message);
  Type other;
  other = copy;
  copy.Clear();
  EXPECT_EQ(bytesOf(copy) + tests::textOf(copy), "");
  EXPECT_EQ(copy.IsInitialized(), Type().IsInitialized());
  EXPECT_EQ(bytesOf(other), bytes);
  copy.Swap(&other);
  EXPECT_EQ(bytesOf(other), "");
  const Type& alias = copy;
  copy = alias;
  copy.CopyFrom(alias);
  copy.Swap(&copy);
  EXPECT_EQ(bytesOf(copy), bytes);
  other.MergeFrom(message);
  EXPECT_EQ(bytesOf(other), bytes);
  EXPECT_EQ(bytesOf(message), bytes);

  google::protobuf::DynamicMessageFactory factory;
  const std::unique_ptr<Message> dynamic(factory.GetPrototype(Type::descriptor())->New());
  ASSERT_TRUE(dynamic->ParseFromString(bytes));
  Arena arena;  // a leak checker sees whether the strings go with it
  Type* onArena = message.New(&arena);
  onArena->CopyFrom(*dynamic);
  EXPECT_EQ(bytesOf(*onArena), bytes);
  onArena->MergeFrom(*dynamic);
  message.MergeFrom(other);
  EXPECT_EQ(bytesOf(*onArena), bytesOf(message));
}

template <typename... Types>
void expectMessageClasses(tests::TypeList<Types...> /*types*/) {
  (expectMessageClass<Types>(), ...);
}

TEST(Messages, CopyAssignSwapClearAndMergeEveryField) {
  expectMessageClasses(tests::MessageTypes());
}

// Scalars overwrite, sub-messages combine, lists append, map values are replaced whole.
struct MergeCase {
  const char* type;
  const char* target;
  const char* source;
  const char* result;
};

const MergeCase mergeCases[] = {
    {"Violation", "id: 1 severity: SEV_FATAL rule_key: 'a'", "severity: SEV_ERROR rule_key: ''",
     "id: 1 severity: SEV_ERROR rule_key: ''"},
    {"CreateViolation", "", "severity: SEV_FATAL", "severity: SEV_FATAL"},
    {"RuleSpec", "severity: SEV_ERROR disposition: READONLY",
     "severity: SEV_FATAL disposition: ENABLED", "severity: SEV_FATAL disposition: ENABLED"},
    {"Session", "name: 'n' report_file { scheme: FILE path: 'p' }",
     "report_file { path: 'q' fragment: 'f' } proto_file { scheme: FILE }",
     "name: 'n' report_file { scheme: FILE path: 'q' fragment: 'f' } proto_file { scheme: FILE }"},
    {"RuleSpec", "session_names { msg: 'a' msg: 'b' } architectures { msg: 'x' }",
     "session_names { msg: 'b' } architectures { msg: 'y' }",
     "session_names { msg: 'a' msg: 'b' msg: 'b' } architectures { msg: 'x' msg: 'y' }"},
    {"Violation", "categories { key: 1 value: 'a' } categories { key: 2 value: 'b' }",
     "categories { key: 2 value: 'c' } categories { key: 3 value: 'd' }",
     "categories { key: 1 value: 'a' } categories { key: 2 value: 'c' } "
     "categories { key: 3 value: 'd' }"},
    {"SessionResult",
     "session { name: 'n' uuid: 'u' } violation_count: 2 "
     "violations { hashmap { key: 1 value { id: 1 rule_key: 'a' } } } "
     "waived_violations { hashmap { key: 1 value { id: 1 rule_key: 'a' } } } "
     "affirmations { hashmap { key: 1 value { id: 1 rule_key: 'a' } } } "
     "specs_violated { hashmap { key: 'k' value { key: 'k' owner: 'o' } } } "
     "specs_affirmed { hashmap { key: 'k' value { key: 'k' owner: 'o' } } }",
     "session { name: 'm' } violation_count: 1 "
     "violations { hashmap { key: 1 value { id: 2 } } hashmap { key: 3 value { } } } "
     "waived_violations { hashmap { key: 1 value { id: 3 } } hashmap { key: 4 value { } } } "
     "affirmations { hashmap { key: 1 value { id: 4 } } hashmap { key: 5 value { } } } "
     "specs_violated { hashmap { key: 'k' value { key: 'l' } } hashmap { key: 'm' value { } } } "
     "specs_affirmed { hashmap { key: 'k' value { key: 'n' } } hashmap { key: 'o' value { } } }",
     "session { name: 'm' uuid: 'u' } violation_count: 1 "
     "violations { hashmap { key: 1 value { id: 2 } } hashmap { key: 3 value { } } } "
     "waived_violations { hashmap { key: 1 value { id: 3 } } hashmap { key: 4 value { } } } "
     "affirmations { hashmap { key: 1 value { id: 4 } } hashmap { key: 5 value { } } } "
     "specs_violated { hashmap { key: 'k' value { key: 'l' } } hashmap { key: 'm' value { } } } "
     "specs_affirmed { hashmap { key: 'k' value { key: 'n' } } hashmap { key: 'o' value { } } }"},
};

TEST(Merge, FollowsTheTable) {
  for (const MergeCase& c : mergeCases) {
    SCOPED_TRACE(c.type + std::string(" { ") + c.source + " }");
    const auto target = tests::newMessage(c.type);
    const auto source = tests::newMessage(c.type);
    const auto result = tests::newMessage(c.type);
    tests::fill(c.target, target.get());
    tests::fill(c.source, source.get());
    tests::fill(c.result, result.get());
    // Parsing a second encoding into a message merges as well.
    const auto parsed = tests::newMessage(c.type);
    ASSERT_TRUE(parsed->ParsePartialFromString(bytesOf(*target) + bytesOf(*source)));
    EXPECT_EQ(tests::textOf(*parsed), tests::textOf(*result));
    target->MergeFrom(*source);
    EXPECT_EQ(tests::textOf(*target), tests::textOf(*result));
  }
}

TEST(MapEntries, OnAnArenaBelongToItAndKeepTheirFields) {
  int maps = 0;
  for (const Message* prototype : tests::allMessages()) {
    const auto* type = prototype->GetDescriptor();
    const auto message = tests::fullMessage(std::string(type->name()));
    for (int i = 0; i < type->field_count(); ++i) {
      if (type->field(i)->is_map()) {
        ++maps;
        const Message& entry =
            message->GetReflection()->GetRepeatedMessage(*message, type->field(i), 0);
        Arena arena;
        Message* copy = entry.New(&arena);
        copy->CopyFrom(entry);
        EXPECT_EQ(copy->GetArena(), &arena) << std::string(type->field(i)->full_name());
        EXPECT_EQ(bytesOf(*copy), bytesOf(entry)) << std::string(type->field(i)->full_name());
      }
    }
  }
  EXPECT_EQ(maps, 9);
}

// CTest runs each case in a process of its own, so the default stays off elsewhere.
TEST(Maps, AreWrittenInTheOrderOfTheirKeysIfThatIsTheRuntimesDefault) {
  CreateViolation message;
  for (int key = 0; key < 100; ++key) {
    (*message.mutable_dynamic_category_values())[std::to_string(key)] = "value";
  }
  EXPECT_FALSE(google::protobuf::io::CodedOutputStream::IsDefaultSerializationDeterministic());
  google::protobuf::internal::MapTestForceDeterministic();
  EXPECT_EQ(message.SerializePartialAsString(), bytesOf(message));
}

TEST(Presence, IsNotContent) {
  Scalar scalar;
  EXPECT_FALSE(scalar.has_string_val());
  scalar.set_string_val("");
  scalar.set_int_val(0);
  EXPECT_TRUE(scalar.has_string_val() && scalar.has_int_val());
  Link link;
  (void)link.url();
  EXPECT_FALSE(link.has_url());
  (void)link.mutable_url();
  EXPECT_TRUE(link.has_url());
}

TEST(Defaults, AreReadWhereNothingIsSet) {
  EXPECT_EQ(Violation().severity(), Violation::SEV_ADVISORY);
  EXPECT_EQ(CreateViolation().severity(), Violation::SEV_FATAL);
  EXPECT_EQ(RuleSpec().severity(), Violation::SEV_FATAL);
  EXPECT_EQ(RuleSpec().disposition(), RuleSpec::ENABLED);
  EXPECT_EQ(Request().type(), Request::CREATE_AFFIRMATION);
  EXPECT_EQ(Response().type(), Response::STATUS_RESPONSE);
  EXPECT_EQ(Resource().scheme(), Resource::DATA);
  EXPECT_EQ(Reference().type(), Reference::ARRAY);
  EXPECT_FALSE(Violation().has_severity() || RuleSpec().has_disposition());
}

TEST(Registration, EmbeddedDescriptorHas9019BytesAndNoSyntaxLine) {
  google::protobuf::FileDescriptorProto proto;
  Request::descriptor()->file()->CopyTo(&proto);
  EXPECT_EQ(proto.name(), "RuleService.proto");
  EXPECT_EQ(proto.SerializeAsString().size(), 9019u);
  EXPECT_FALSE(proto.has_syntax());
}

}  // namespace
