// SPDX-License-Identifier: Apache-2.0

// What the classes offer: copies, swap, merges, messages of another class, arenas, required fields,
// enumerations, registration. contract.txt lists what the schema declares.

#include <gmock/gmock.h>
#include <google/protobuf/arena.h>
#include <google/protobuf/descriptor.h>
#include <google/protobuf/descriptor.pb.h>
#include <google/protobuf/dynamic_message.h>

#include <memory>
#include <string>

#include "support/messages.h"

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
  ASSERT_TRUE(message.ParseFromString(bytes));
  Type copy(message);
  Type other;
  other = copy;
  copy.Clear();
  EXPECT_EQ(bytesOf(copy) + tests::textOf(copy), "");
  copy.Swap(&other);
  EXPECT_EQ(bytesOf(other), "");
  EXPECT_EQ(bytesOf(copy), bytes);

  google::protobuf::DynamicMessageFactory factory;
  const std::unique_ptr<Message> dynamic(factory.GetPrototype(Type::descriptor())->New());
  ASSERT_TRUE(dynamic->ParseFromString(bytes));
  Arena arena;  // a leak checker sees whether the strings go with it
  Type* onArena = message.New(&arena);
  onArena->MergeFrom(*dynamic);
  EXPECT_EQ(bytesOf(*onArena), bytes);
}

template <typename... Types>
void expectMessageClasses(tests::TypeList<Types...> /*types*/) {
  (expectMessageClass<Types>(), ...);
}

TEST(Messages, CopyAssignClearSwapAndMergeEveryField) {
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
     "specs_violated { hashmap { key: 'k' value { key: 'k' owner: 'o' } } }",
     "session { name: 'm' } violation_count: 1 "
     "specs_violated { hashmap { key: 'k' value { key: 'l' } } hashmap { key: 'm' value { } } }",
     "session { name: 'm' uuid: 'u' } violation_count: 1 "
     "specs_violated { hashmap { key: 'k' value { key: 'l' } } hashmap { key: 'm' value { } } }"},
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

void expectComplete(const Message& message, bool isComplete) {
  EXPECT_EQ(message.IsInitialized(), isComplete);
  // By reflection, not by generated code.
  EXPECT_EQ(message.InitializationErrorString().empty(), isComplete);
  std::string bytes = bytesOf(message);
  const std::unique_ptr<Message> parsed(message.New());
  EXPECT_EQ(parsed->ParseFromString(bytes), isComplete);
  EXPECT_TRUE(parsed->ParsePartialFromString(bytes));
  EXPECT_EQ(bytesOf(*parsed), bytes);
// In later releases a packaged runtime ends the process instead.
#if GOOGLE_PROTOBUF_VERSION < 4022000
  try {
    EXPECT_TRUE(message.SerializeToString(&bytes));
  } catch (const google::protobuf::FatalException&) {
    EXPECT_FALSE(isComplete);
  }
#endif
}

TEST(Initialization, NeedsEveryRequiredFieldAndNoOther) {
  for (const Message* prototype : tests::allMessages()) {
    const auto* type = prototype->GetDescriptor();
    const auto full = tests::fullMessage(std::string(type->name()));
    expectComplete(*full, true);
    for (int i = 0; i < type->field_count(); ++i) {
      SCOPED_TRACE(std::string(type->field(i)->full_name()));
      const std::unique_ptr<Message> message(prototype->New());
      message->CopyFrom(*full);
      message->GetReflection()->ClearField(message.get(), type->field(i));
      expectComplete(*message, !type->field(i)->is_required());
    }
  }
}

// From a Response down to a Resource in the value of a map, and without a session.
TEST(Initialization, NamesMissingFieldsByTheirPaths) {
  const auto response = tests::parse<Response>(
      "type: SESSION_RESULT session_result { specs_violated { hashmap { key: 'k' "
      "value { key: 'k' full_name: 'n' description { } } } } }");
  EXPECT_THAT(
      response.InitializationErrorString(),
      testing::AllOf(
          testing::HasSubstr("session_result.session"),
          testing::HasSubstr("session_result.specs_violated.hashmap[0].value.description.scheme")));
  expectComplete(response, false);
}

TEST(Enums, HaveTheNamesAndBoundsOfTheClassInTheNamespaceToo) {
  EXPECT_EQ(static_cast<int>(Reference_RefType_FILE), static_cast<int>(Reference::FILE));
  EXPECT_EQ(Resource_Scheme_Scheme_MIN, Resource::Scheme_MIN);
  EXPECT_EQ(Resource_Scheme_Scheme_MAX, Resource::Scheme_MAX);
  EXPECT_EQ(std::string(Resource_Scheme_Name(Resource::MAILTO)), "MAILTO");
  auto scheme = Resource::DATA;
  EXPECT_TRUE(Resource::Scheme_Parse("FILE", &scheme));
  EXPECT_FALSE(Resource_Scheme_Parse("file", &scheme));
  EXPECT_EQ(scheme, Resource::FILE);
}

// The setters are inline, so it is the program's NDEBUG that counts.
TEST(Enums, SettersStoreAnUnlistedNumberOrAbort) {
  Resource resource;
  const auto unlisted = static_cast<Resource_Scheme>(7);
#ifdef NDEBUG
  resource.set_scheme(unlisted);
  EXPECT_TRUE(resource.has_scheme());
  EXPECT_EQ(static_cast<int>(resource.scheme()), 7);
#else
  EXPECT_DEATH(resource.set_scheme(unlisted), "IsValid");
#endif
}

TEST(Registration, EmbeddedDescriptorHas9019BytesAndNoSyntaxLine) {
  google::protobuf::FileDescriptorProto proto;
  Request::descriptor()->file()->CopyTo(&proto);
  EXPECT_EQ(proto.name(), "RuleService.proto");
  EXPECT_EQ(proto.SerializeAsString().size(), 9019u);
  EXPECT_FALSE(proto.has_syntax());
}

}  // namespace
