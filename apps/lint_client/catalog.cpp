// SPDX-License-Identifier: Apache-2.0

#include "lint_client/catalog.h"

#include "common/message_file.h"
#include "lint_client/rules_text.h"

namespace lint_client {
namespace {

using vok::rulecheck::Resource;
using vok::rulecheck::RuleSpec;
using vok::rulecheck::RuleSpecMap;

// What all rules have in common. The first argument of a violation is its place,
// the second Verilator's text.
void complete(RuleSpec* rule) {
  rule->set_owner("Verilator");
  rule->set_raw_msg(rule->full_name() + " at %1: %2");
  rule->set_affirm_msg(rule->expects());
  if (!rule->has_description()) {
    rule->mutable_description()->set_scheme(Resource::HTTPS);
    rule->mutable_description()->set_host("verilator.org");
    rule->mutable_description()->set_path("/warn/" + rule->key());
  }
}

}  // namespace

RuleSpecMap catalog() {
  RuleSpecMap rules;
  apps::decodeFrom("rules.txtpb", kRulesText, &rules);
  for (auto& entry : *rules.mutable_hashmap()) {
    complete(&entry.second);
  }
  return rules;
}

std::string ruleKeyOf(const Message& message) {
  return message.code.empty() ? "ERROR" : message.code;
}

RuleSpec genericRule(const Message& message) {
  RuleSpec rule;
  rule.set_key(ruleKeyOf(message));
  rule.set_full_name("Verilator's check " + rule.key());
  rule.set_severity(message.isError ? vok::rulecheck::Violation::SEV_ERROR
                                    : vok::rulecheck::Violation::SEV_WARNING);
  (*rule.mutable_categories())[kGroupCategory] = "other";
  rule.set_expects("Verilator's check " + rule.key() + " finds nothing.");
  rule.set_resolution_msg("Read about " + rule.key() + " in Verilator's manual.");
  complete(&rule);
  return rule;
}

}  // namespace lint_client
