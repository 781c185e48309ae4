// All string fields that a message can hold, at every depth.

#ifndef VOK_TESTS_APPS_HTML_REPORT_STRING_FIELDS_H_
#define VOK_TESTS_APPS_HTML_REPORT_STRING_FIELDS_H_

#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <string>
#include <vector>

namespace tests {

// The fields that lead from a message to a string field, which comes last. Keys
// and values of maps are fields of their entries.
using FieldPath = std::vector<const google::protobuf::FieldDescriptor*>;

std::vector<FieldPath> stringFields(const google::protobuf::Descriptor* type);

// "violations.hashmap.value.rule_key"
std::string nameOf(const FieldPath& path);

// Sets the field at the end of the path. Repeated fields and maps on the way get
// a new element; a map's entry gets the number as its key.
void setString(google::protobuf::Message* message, const FieldPath& path, const std::string& text,
               int number);

// A result in which every string field holds the text, each field in a finding,
// or a rule with a finding, of its own. What a resource lacks is taken from rest.
vok::rulecheck::SessionResult resultWithEverywhere(const std::string& text,
                                                   const vok::rulecheck::Resource& rest);

// A result in which one string field holds the text.
vok::rulecheck::SessionResult resultWithOnly(const FieldPath& path, const std::string& text,
                                             const vok::rulecheck::Resource& rest);

}  // namespace tests

#endif  // VOK_TESTS_APPS_HTML_REPORT_STRING_FIELDS_H_
