// SPDX-License-Identifier: Apache-2.0

// How messages merge: scalars overwrite, sub-messages combine, lists append, map
// values are replaced whole.

#include <gtest/gtest.h>

#include <string>

#include "support/messages.h"

namespace {

struct MergeCase {
  const char* name;
  const char* type;
  const char* target;
  const char* source;
  const char* result;
};

const MergeCase mergeCases[] = {
    {"present scalars overwrite", "Violation", "id: 1 severity: SEV_FATAL rule_key: 'a'",
     "severity: SEV_ERROR rule_key: ''", "id: 1 severity: SEV_ERROR rule_key: ''"},
    {"absent fields leave the target alone", "Session", "name: 'n' timestamp: 5", "uuid: 'u'",
     "name: 'n' uuid: 'u' timestamp: 5"},
    {"a merge marks fields as present", "CreateViolation", "", "severity: SEV_FATAL",
     "severity: SEV_FATAL"},
    {"sub-messages combine", "Session", "name: 'n' report_file { scheme: FILE path: 'p' }",
     "report_file { path: 'q' fragment: 'f' } proto_file { scheme: FILE }",
     "name: 'n' report_file { scheme: FILE path: 'q' fragment: 'f' } proto_file { scheme: FILE }"},
    {"lists append", "StringList", "msg: 'a' msg: 'b'", "msg: 'b'", "msg: 'a' msg: 'b' msg: 'b'"},
    {"message lists append", "Links", "uri { link_text: 'a' }", "uri { link_text: 'b' } uri { }",
     "uri { link_text: 'a' } uri { link_text: 'b' } uri { }"},
    {"the lists of a rule specification concatenate", "RuleSpec",
     "session_names { msg: 'a' msg: 'b' } architectures { msg: 'x' }",
     "session_names { msg: 'c' } architectures { msg: 'y' }",
     "session_names { msg: 'a' msg: 'b' msg: 'c' } architectures { msg: 'x' msg: 'y' }"},
    {"the sub-messages of a rule specification combine", "RuleSpec",
     "first_release { major: 1 } threshold_value { int_val: 3 units: 'ns' } "
     "description { scheme: HTTPS host: 'h' }",
     "first_release { minor: 2 } threshold_value { int_val: 4 } description { path: 'p' }",
     "first_release { major: 1 minor: 2 } threshold_value { int_val: 4 units: 'ns' } "
     "description { scheme: HTTPS host: 'h' path: 'p' }"},
    {"string map values are assigned", "Violation",
     "categories { key: 1 value: 'a' } categories { key: 2 value: 'b' }",
     "categories { key: 2 value: 'c' } categories { key: 3 value: 'd' }",
     "categories { key: 1 value: 'a' } categories { key: 2 value: 'c' } "
     "categories { key: 3 value: 'd' }"},
    {"bool map values are assigned", "RuleSpec", "dynamic_categories { key: 1 value: true }",
     "dynamic_categories { key: 1 value: false }", "dynamic_categories { key: 1 value: false }"},
    {"a violation under a common key is replaced whole", "ViolationMap",
     "hashmap { key: 3 value { id: 3 severity: SEV_FATAL rule_key: 'old' } } "
     "hashmap { key: 4 value { id: 4 severity: SEV_ERROR } }",
     "hashmap { key: 3 value { id: 3 severity: SEV_ERROR } }",
     "hashmap { key: 3 value { id: 3 severity: SEV_ERROR } } "
     "hashmap { key: 4 value { id: 4 severity: SEV_ERROR } }"},
    {"an affirmation under a common key is replaced whole", "AffirmationMap",
     "hashmap { key: 3 value { id: 3 rule_key: 'old' } }", "hashmap { key: 3 value { id: 9 } }",
     "hashmap { key: 3 value { id: 9 } }"},
    {"a specification under a common key is replaced whole", "RuleSpecMap",
     "hashmap { key: 'k' value { key: 'k' full_name: 'n' owner: 'o' } }",
     "hashmap { key: 'k' value { key: 'k' full_name: 'm' } }",
     "hashmap { key: 'k' value { key: 'k' full_name: 'm' } }"},
    {"the maps of a session result merge by key, its session field by field", "SessionResult",
     "session { name: 'n' uuid: 'u' } violation_count: 2 "
     "violations { hashmap { key: 1 value { id: 1 severity: SEV_ERROR rule_key: 'a' } } "
     "hashmap { key: 2 value { id: 2 severity: SEV_ERROR } } }",
     "session { name: 'm' } violation_count: 1 "
     "violations { hashmap { key: 1 value { id: 1 severity: SEV_FATAL } } }",
     "session { name: 'm' uuid: 'u' } violation_count: 1 "
     "violations { hashmap { key: 1 value { id: 1 severity: SEV_FATAL } } "
     "hashmap { key: 2 value { id: 2 severity: SEV_ERROR } } }"},
    {"every map of a session result merges by key", "SessionResult",
     "violations { hashmap { key: 1 value { id: 1 rule_key: 'a' } } } "
     "waived_violations { hashmap { key: 1 value { id: 1 rule_key: 'a' } } } "
     "affirmations { hashmap { key: 1 value { id: 1 rule_key: 'a' } } } "
     "specs_violated { hashmap { key: 'k' value { key: 'k' owner: 'o' } } } "
     "specs_affirmed { hashmap { key: 'k' value { key: 'k' owner: 'o' } } }",
     "violations { hashmap { key: 1 value { id: 2 } } hashmap { key: 3 value { } } } "
     "waived_violations { hashmap { key: 1 value { id: 3 } } hashmap { key: 4 value { } } } "
     "affirmations { hashmap { key: 1 value { id: 4 } } hashmap { key: 5 value { } } } "
     "specs_violated { hashmap { key: 'k' value { key: 'l' } } hashmap { key: 'm' value { } } } "
     "specs_affirmed { hashmap { key: 'k' value { key: 'n' } } hashmap { key: 'o' value { } } }",
     "violations { hashmap { key: 1 value { id: 2 } } hashmap { key: 3 value { } } } "
     "waived_violations { hashmap { key: 1 value { id: 3 } } hashmap { key: 4 value { } } } "
     "affirmations { hashmap { key: 1 value { id: 4 } } hashmap { key: 5 value { } } } "
     "specs_violated { hashmap { key: 'k' value { key: 'l' } } hashmap { key: 'm' value { } } } "
     "specs_affirmed { hashmap { key: 'k' value { key: 'n' } } hashmap { key: 'o' value { } } }"},
    {"severity and disposition of a rule specification are overwritten", "RuleSpec",
     "severity: SEV_ERROR disposition: READONLY", "severity: SEV_FATAL disposition: ENABLED",
     "severity: SEV_FATAL disposition: ENABLED"},
    {"the bodies of an envelope combine", "Request",
     "type: CREATE_VIOLATION create_violation { rule_key: 'k' }",
     "create_violation { session_uuid: 'u' } get_version { }",
     "type: CREATE_VIOLATION create_violation { rule_key: 'k' session_uuid: 'u' } get_version { }"},
    {"an empty source changes nothing", "Arg", "scalar { int_val: 1 }", "",
     "scalar { int_val: 1 }"},
};

TEST(Merge, FollowsTheTable) {
  for (const MergeCase& c : mergeCases) {
    const auto target = tests::newMessage(c.type);
    const auto source = tests::newMessage(c.type);
    const auto result = tests::newMessage(c.type);
    tests::fill(c.target, target.get());
    tests::fill(c.source, source.get());
    tests::fill(c.result, result.get());
    // Parsing a second encoding into a message merges as well.
    const auto parsed = tests::newMessage(c.type);
    ASSERT_TRUE(parsed->ParsePartialFromString(tests::bytesOf(*target) + tests::bytesOf(*source)));
    EXPECT_EQ(tests::textOf(*parsed), tests::textOf(*result)) << c.name;
    target->MergeFrom(*source);
    EXPECT_EQ(tests::textOf(*target), tests::textOf(*result)) << c.name;
  }
}

TEST(Merge, KeepsUnknownFieldsOfBothSides) {
  vok::rulecheck::Reference target;
  vok::rulecheck::Reference source;
  ASSERT_TRUE(target.ParsePartialFromString(tests::fromHex("08 1d")));
  ASSERT_TRUE(source.ParsePartialFromString(tests::fromHex("08 1e")));
  target.MergeFrom(source);
  EXPECT_EQ(tests::toHex(tests::bytesOf(target)), "08 1d 08 1e");
}

}  // namespace
