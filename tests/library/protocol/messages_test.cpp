// SPDX-License-Identifier: Apache-2.0

// What every message class offers: default instances, construction, copies,
// presence, clearing, arenas.

#include <gmock/gmock.h>
#include <google/protobuf/arena.h>
#include <google/protobuf/descriptor.h>
#include <google/protobuf/descriptor.pb.h>
#include <google/protobuf/message.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "support/messages.h"

namespace {

using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using namespace vok::rulecheck;

// CTest runs each case in a process of its own, so that nothing has asked for a
// descriptor before this one.
TEST(DefaultInstances, AreTheSameFromEveryThreadBeforeAnyDescriptorIsAskedFor) {
  const Violation* const expected = &Violation::default_instance();
  std::vector<const Violation*> seen(8);
  std::vector<std::thread> threads;
  threads.reserve(seen.size());
  for (auto& slot : seen) {
    threads.emplace_back([&slot] { slot = &Violation::default_instance(); });
  }
  for (auto& thread : threads) {
    thread.join();
  }
  EXPECT_THAT(seen, testing::Each(expected));
}

// Every singular message field of every type, through reflection.
TEST(DefaultInstances, AreReturnedForEveryAbsentSubMessage) {
  int fields = 0;
  for (const Message* message : tests::allMessages()) {
    const Descriptor& descriptor = *message->GetDescriptor();
    for (int i = 0; i < descriptor.field_count(); ++i) {
      const FieldDescriptor& field = *descriptor.field(i);
      if (field.is_repeated() || field.cpp_type() != FieldDescriptor::CPPTYPE_MESSAGE) {
        continue;
      }
      ++fields;
      const Message& value = message->GetReflection()->GetMessage(*message, &field);
      EXPECT_EQ(&value, google::protobuf::MessageFactory::generated_factory()->GetPrototype(
                            field.message_type()))
          << std::string(field.full_name());
    }
  }
  EXPECT_EQ(fields, 70);
}

TEST(Messages, AreEmptyWhenNew) {
  for (const Message* prototype : tests::allMessages()) {
    const std::unique_ptr<Message> message(prototype->New());
    EXPECT_EQ(message->ByteSizeLong(), 0u) << std::string(message->GetTypeName());
    EXPECT_EQ(tests::textOf(*message), "") << std::string(message->GetTypeName());
    EXPECT_NE(message.get(), prototype);
  }
}

TEST(Messages, CreatedForAnArenaBelongToIt) {
  google::protobuf::Arena arena;
  for (const Message* prototype : tests::allMessages()) {
    Message* message = prototype->New(&arena);
    ASSERT_NE(message, nullptr);
    EXPECT_EQ(message->GetDescriptor(), prototype->GetDescriptor());
    EXPECT_EQ(message->ByteSizeLong(), 0u);
  }
  Violation* violation = Violation().New(&arena);
  violation->set_rule_key(std::string(1000, 'k'));
  violation->mutable_details()->set_text(std::string(1000, 't'));
  arena.Reset();  // a leak checker sees whether the strings went too
}

TEST(Messages, ExchangeFieldsPresenceAndUnknownFieldsWhenSwapped) {
  Reference a;
  ASSERT_TRUE(a.ParsePartialFromString(tests::fromHex("08 1d 12 01 61")));  // type 29, name "a"
  auto b = tests::parse<Reference>("type: LOOP id: 3");
  a.Swap(&b);
  EXPECT_EQ(tests::toHex(tests::bytesOf(a)), "08 0f 18 03");
  EXPECT_EQ(tests::toHex(tests::bytesOf(b)), "12 01 61 08 1d");
}

TEST(Messages, CopiesAreDeepAndIndependent) {
  const auto original = tests::parse<SessionResult>(
      "session { name: 'n' } violations { hashmap { key: 3 value { id: 3 severity: SEV_ERROR } } "
      "}");
  SessionResult copy(original);
  (*copy.mutable_violations()->mutable_hashmap())[3].set_rule_key("changed");
  copy.mutable_session()->set_name("changed");
  EXPECT_EQ(original.violations().hashmap().at(3).rule_key(), "");
  EXPECT_EQ(original.session().name(), "n");
}

TEST(Presence, IsNotContent) {
  Scalar scalar;
  EXPECT_FALSE(scalar.has_string_val());
  scalar.set_string_val("");
  scalar.set_int_val(0);
  scalar.set_double_val(0.0);
  EXPECT_TRUE(scalar.has_string_val());
  EXPECT_TRUE(scalar.has_int_val());
  EXPECT_TRUE(scalar.has_double_val());
  EXPECT_FALSE(scalar.has_units());
  Link link;
  (void)link.url();
  EXPECT_FALSE(link.has_url());
  (void)link.mutable_url();
  EXPECT_TRUE(link.has_url());
}

TEST(Defaults, OfTheThreeSeveritiesDiffer) {
  EXPECT_EQ(Violation().severity(), Violation::SEV_ADVISORY);
  EXPECT_FALSE(Violation().has_severity());
  EXPECT_EQ(CreateViolation().severity(), Violation::SEV_FATAL);
  EXPECT_FALSE(CreateViolation().has_severity());
  EXPECT_EQ(RuleSpec().severity(), Violation::SEV_FATAL);
  EXPECT_FALSE(RuleSpec().has_severity());
}

TEST(Defaults, OfARuleSpecAreEnabledAndAbsent) {
  EXPECT_EQ(RuleSpec().disposition(), RuleSpec::ENABLED);
  EXPECT_FALSE(RuleSpec().has_disposition());
  EXPECT_EQ(RuleSpec().msg_id(), 0);
}

TEST(Defaults, OfTheEnvelopeTypesAreTheirFirstValues) {
  EXPECT_EQ(Request().type(), Request::CREATE_AFFIRMATION);
  EXPECT_FALSE(Request().has_type());
  EXPECT_EQ(Response().type(), Response::STATUS_RESPONSE);
  EXPECT_FALSE(Response().has_type());
  EXPECT_EQ(Resource().scheme(), Resource::DATA);
  EXPECT_EQ(Reference().type(), Reference::ARRAY);
}

TEST(Defaults, OfEveryOtherFieldAreTheZeroOfItsType) {
  for (const Message* message : tests::allMessages()) {
    const Descriptor& descriptor = *message->GetDescriptor();
    for (int i = 0; i < descriptor.field_count(); ++i) {
      const FieldDescriptor& field = *descriptor.field(i);
      const std::string name(field.full_name());
      switch (field.cpp_type()) {
        case FieldDescriptor::CPPTYPE_INT32:
          EXPECT_EQ(field.default_value_int32(), 0) << name;
          break;
        case FieldDescriptor::CPPTYPE_INT64:
          EXPECT_EQ(field.default_value_int64(), 0) << name;
          break;
        case FieldDescriptor::CPPTYPE_UINT32:
          EXPECT_EQ(field.default_value_uint32(), 0u) << name;
          break;
        case FieldDescriptor::CPPTYPE_DOUBLE:
          EXPECT_EQ(field.default_value_double(), 0) << name;
          break;
        case FieldDescriptor::CPPTYPE_BOOL: EXPECT_FALSE(field.default_value_bool()) << name; break;
        case FieldDescriptor::CPPTYPE_STRING:
          EXPECT_EQ(std::string(field.default_value_string()), "") << name;
          break;
        case FieldDescriptor::CPPTYPE_ENUM:
          EXPECT_EQ(field.default_value_enum()->index(),
                    name == "vok.rulecheck.Violation.severity" ? 4 : 0)
              << name;
          break;
        case FieldDescriptor::CPPTYPE_MESSAGE: break;
        default: FAIL() << name << " has an unexpected type";
      }
    }
  }
}

TEST(Clear, ReturnsAViolationToItsDefaults) {
  auto violation = tests::parse<Violation>("id: 7 severity: SEV_ERROR rule_key: 'k'");
  violation.Clear();
  EXPECT_EQ(violation.severity(), Violation::SEV_ADVISORY);
  EXPECT_EQ(violation.id(), 0);
  EXPECT_FALSE(violation.has_severity());
  EXPECT_FALSE(violation.has_id());
  EXPECT_EQ(violation.ByteSizeLong(), 0u);
}

TEST(Registration, ServiceIsFoundByItsName) {
  EXPECT_NE(google::protobuf::DescriptorPool::generated_pool()->FindServiceByName(
                "vok.rulecheck.RuleCheckService"),
            nullptr);
}

TEST(Registration, EmbeddedDescriptorHas9019BytesAndNoSyntaxLine) {
  google::protobuf::FileDescriptorProto proto;
  Request::descriptor()->file()->CopyTo(&proto);
  EXPECT_EQ(proto.name(), "RuleService.proto");
  EXPECT_EQ(proto.SerializeAsString().size(), 9019u);
  EXPECT_FALSE(proto.has_syntax());
}

}  // namespace
