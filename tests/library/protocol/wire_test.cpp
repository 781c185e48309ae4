// SPDX-License-Identifier: Apache-2.0

// Bytes on the wire, exactly: what is written for what is set, and what is read
// from what arrives.

#include <gmock/gmock.h>
#include <google/protobuf/unknown_field_set.h>
#include <gtest/gtest.h>

#include <string>

#include "support/messages.h"

namespace {

using google::protobuf::UnknownField;
using tests::bytesOf;
using tests::fromHex;
using tests::toHex;
using namespace vok::rulecheck;

struct EncodingCase {
  const char* name;
  const char* type;
  const char* text;
  const char* bytes;
};

const EncodingCase encodingCases[] = {
    {"an empty resource is no bytes", "Resource", "", ""},
    {"a required enum is written when it equals its default", "Resource", "scheme: DATA", "08 00"},
    {"a string set to nothing is written", "Resource", "host: ''", "12 00"},
    {"a number set to 0 is written", "Resource", "scheme: FILE port: 0", "08 01 18 00"},
    {"fields are written in ascending number", "Link", "docgen_filename: 'd' link_text: 't'",
     "0a 01 74 1a 01 64"},
    {"a negative int32 takes ten bytes", "Violation", "id: -1", "08 ff ff ff ff ff ff ff ff ff 01"},
    {"a negative int64 takes ten bytes", "Scalar", "int_val: -2",
     "08 fe ff ff ff ff ff ff ff ff 01"},
    {"a double takes eight bytes, the lowest first", "Scalar", "double_val: 1.5",
     "11 00 00 00 00 00 00 f8 3f"},
    {"a violation with only an id is one varint", "Violation", "id: 5", "08 05"},
    {"an affirmation's rule key is field 2", "Affirmation", "id: 1 rule_key: 'k'",
     "08 01 12 01 6b"},
    {"a violation's rule key is field 3", "Violation", "id: 1 severity: SEV_ERROR rule_key: 'k'",
     "08 01 10 01 1a 01 6b"},
    {"a map entry is a message with key 1 and value 2", "Violation",
     "categories { key: 7 value: 'c' }", "5a 05 08 07 12 01 63"},
    {"an empty map writes nothing", "ViolationMap", "", ""},
    {"an empty map value is written", "ViolationMap", "hashmap { key: 1 value { } }",
     "0a 04 08 01 12 00"},
    {"a negative map key takes ten bytes", "Violation", "categories { key: -1 value: '' }",
     "5a 0d 08 ff ff ff ff ff ff ff ff ff 01 12 00"},
    {"int32 keys are written in numeric order", "ViolationMap",
     "hashmap { key: 5 value { } } hashmap { key: -1 value { } } hashmap { key: 2 value { } }",
     "0a 0d 08 ff ff ff ff ff ff ff ff ff 01 12 00 0a 04 08 02 12 00 0a 04 08 05 12 00"},
    {"string keys are written in byte order", "RuleSpecMap",
     "hashmap { key: 'b' value { } } hashmap { key: 'B' value { } } hashmap { key: 'a' value { } }",
     "0a 05 0a 01 42 12 00 0a 05 0a 01 61 12 00 0a 05 0a 01 62 12 00"},
    {"string keys above 127 sort after ASCII", "CreateViolation",
     "dynamic_category_values { key: '\\377' value: '' } "
     "dynamic_category_values { key: 'z' value: '' }",
     "32 05 0a 01 7a 12 00 32 05 0a 01 ff 12 00"},
    {"a shorter string key sorts before a longer one", "CreateAffirmation",
     "dynamic_category_values { key: 'ab' value: '' } dynamic_category_values { key: 'a' value: '' "
     "}",
     "32 05 0a 01 61 12 00 32 06 0a 02 61 62 12 00"},
    {"bool map values are varints", "RuleSpec",
     "dynamic_categories { key: 2 value: true } dynamic_categories { key: 1 value: false }",
     "9a 01 04 08 01 10 00 9a 01 04 08 02 10 01"},
    {"a rule's categories come between msg_id and resolution_msg", "RuleSpec",
     "resolution_msg: 'r' msg_id: 1 categories { key: 1 value: 'c' }",
     "30 01 3a 05 08 01 12 01 63 42 01 72"},
    {"a rule with its required fields is fields 1 and 2", "RuleSpec", "key: 'k' full_name: 'n'",
     "0a 01 6b 12 01 6e"},
    {"the severity of a request comes last", "CreateViolation",
     "severity: SEV_WARNING rule_key: 'k' dynamic_category_values { key: 'd' value: 'v' }",
     "0a 01 6b 32 06 0a 01 64 12 01 76 38 03"},
    {"a request to stop the server is two bytes", "Request", "type: STOP_SERVER", "08 0f"},
    {"a violation with only a severity", "Violation", "severity: SEV_ERROR", "10 01"},
    {"a rule with only a key", "RuleSpec", "key: 'k'", "0a 01 6b"},
    {"a rule with only a full name", "RuleSpec", "full_name: 'n' owner: 'o'", "12 01 6e 1a 01 6f"},
    {"a version without patch", "Version", "major: 1 minor: 4", "08 01 10 04"},
    {"a version without minor", "Version", "major: 1 patch: 300", "08 01 18 ac 02"},
    {"a version without major", "Version", "minor: 4 patch: 0", "10 04 18 00"},
    {"a version with only a patch", "Version", "patch: 2", "18 02"},
    {"the largest version part is a five-byte varint", "Version", "major: 4294967295",
     "08 ff ff ff ff 0f"},
    {"a start's report file is field 6", "StartSession", "report_file { scheme: FILE }",
     "32 02 08 01"},
    {"a session's report file is field 5", "Session", "report_file { scheme: FILE }",
     "2a 02 08 01"},
    {"strings are bytes, zero bytes and bad UTF-8 included", "ExchangeToken", "token: '\\000\\377'",
     "0a 02 00 ff"},
};

TEST(Encoding, IsExactlyTheBytesOfTheTable) {
  for (const EncodingCase& c : encodingCases) {
    const auto message = tests::newMessage(c.type);
    tests::fill(c.text, message.get());
    EXPECT_EQ(toHex(bytesOf(*message)), c.bytes) << c.name;
    EXPECT_EQ(message->ByteSizeLong(), fromHex(c.bytes).size()) << c.name;
    const auto parsed = tests::newMessage(c.type);
    ASSERT_TRUE(parsed->ParsePartialFromString(fromHex(c.bytes))) << c.name;
    EXPECT_EQ(tests::textOf(*parsed), tests::textOf(*message)) << c.name;
  }
}

struct UnlistedCase {
  const char* name;
  const char* type;
  const char* arriving;
  const char* leaving;
  const char* text;
};

// A number that an enum does not list is not stored: the field stays absent, and
// the number leaves as it came, after the known fields.
const UnlistedCase unlistedCases[] = {
    {"scheme 7", "Resource", "08 07 12 01 68", "12 01 68 08 07", "host: 'h'"},
    {"reference kind 29", "Reference", "08 1d", "08 1d", ""},
    {"a negative reference kind", "Reference", "08 ff ff ff ff ff ff ff ff ff 01 18 02",
     "18 02 08 ff ff ff ff ff ff ff ff ff 01", "id: 2"},
    {"severity 9 of a violation", "Violation", "08 01 10 09 1a 01 6b", "08 01 1a 01 6b 10 09",
     "id: 1 rule_key: 'k'"},
    {"severity 6 of a request", "CreateViolation", "38 06 0a 01 6b", "0a 01 6b 38 06",
     "rule_key: 'k'"},
    {"severity 6 of a rule", "RuleSpec", "50 06", "50 06", ""},
    {"disposition 7", "RuleSpec", "0a 01 6b 12 01 6e 68 07", "0a 01 6b 12 01 6e 68 07",
     "key: 'k' full_name: 'n'"},
    {"request type 0", "Request", "08 00", "08 00", ""},
    {"request type 16", "Request", "08 10", "08 10", ""},
    {"response type 7", "Response", "08 07", "08 07", ""},
};

TEST(UnlistedEnumNumbers, StayAbsentAndLeaveUnchanged) {
  for (const UnlistedCase& c : unlistedCases) {
    const auto message = tests::newMessage(c.type);
    ASSERT_TRUE(message->ParsePartialFromString(fromHex(c.arriving))) << c.name;
    EXPECT_EQ(toHex(bytesOf(*message)), c.leaving) << c.name;
    const auto& unknown = message->GetReflection()->GetUnknownFields(*message);
    ASSERT_EQ(unknown.field_count(), 1) << c.name;
    EXPECT_EQ(unknown.field(0).type(), UnknownField::TYPE_VARINT) << c.name;

    const auto known = tests::newMessage(c.type);
    tests::fill(c.text, known.get());
    EXPECT_EQ(message->IsInitialized(), known->IsInitialized()) << c.name;
    message->GetReflection()->MutableUnknownFields(message.get())->Clear();
    EXPECT_EQ(tests::textOf(*message), tests::textOf(*known)) << c.name;
  }
}

TEST(UnlistedEnumNumbers, LeaveDefaultsToBeRead) {
  Violation violation;
  ASSERT_TRUE(violation.ParsePartialFromString(fromHex("10 09")));
  EXPECT_EQ(violation.severity(), Violation::SEV_ADVISORY);
  RuleSpec spec;
  ASSERT_TRUE(spec.ParsePartialFromString(fromHex("68 07")));
  EXPECT_EQ(spec.disposition(), RuleSpec::ENABLED);
}

TEST(UnknownFields, OfEveryWireTypeSurviveARoundTrip) {
  // Field 100: a varint, eight bytes, four bytes, a string, a group.
  const std::string bytes = fromHex(
      "a0 06 05  a1 06 01 02 03 04 05 06 07 08  a5 06 01 02 03 04  a2 06 02 68 69  a3 06 08 01 a4 "
      "06");
  for (const google::protobuf::Message* prototype : tests::allMessages()) {
    const std::unique_ptr<google::protobuf::Message> message(prototype->New());
    ASSERT_TRUE(message->ParsePartialFromString(bytes)) << std::string(message->GetTypeName());
    EXPECT_EQ(bytesOf(*message), bytes) << std::string(message->GetTypeName());
  }
}

TEST(UnknownFields, FollowTheKnownOnes) {
  ExchangeToken token;
  ASSERT_TRUE(token.ParseFromString(fromHex("a0 06 05 0a 01 74")));
  EXPECT_EQ(toHex(bytesOf(token)), "0a 01 74 a0 06 05");
}

}  // namespace
