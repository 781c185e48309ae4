// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/lint/catalog.h"

#include <strings.h>

#include "common/message_file.h"
#include "rulecheck/assets.h"

namespace rulecheck {
namespace {

using vok::rulecheck::CreateViolation;
using vok::rulecheck::Resource;
using vok::rulecheck::RuleSpec;
using vok::rulecheck::Violation;

// The category that holds a rule's group: lint, style, default, error or other.
constexpr int kGroupCategory = 2;

// What all rules have in common. The first argument of a violation is its place, the
// second Verilator's text.
void complete(RuleSpec* rule) {
  rule->set_owner("Verilator");
  rule->set_raw_msg("%1: %2");
  rule->set_affirm_msg(rule->expects());
  if (!rule->has_description()) {
    rule->mutable_description()->set_scheme(Resource::HTTPS);
    rule->mutable_description()->set_host("verilator.org");
    rule->mutable_description()->set_path("/warn/" + rule->key());
  }
}

RuleSpec genericRule(const CreateViolation& violation) {
  RuleSpec rule;
  rule.set_key(violation.rule_key());
  rule.set_full_name("Verilator's check " + rule.key());
  rule.set_severity(violation.has_severity() ? violation.severity() : Violation::SEV_WARNING);
  (*rule.mutable_categories())[kGroupCategory] = "other";
  rule.set_expects("Verilator's check " + rule.key() + " finds nothing.");
  rule.set_resolution_msg("Read about " + rule.key() + " in Verilator's manual.");
  complete(&rule);
  return rule;
}

// Case makes no difference to Verilator.
bool isNamed(const std::string& name, const RuleSpec& rule) {
  const auto is = [&name](const std::string& other) {
    return strcasecmp(name.c_str(), other.c_str()) == 0;
  };
  const std::string& group = rule.categories().at(kGroupCategory);
  return name.empty() || is(rule.key()) || is(group) || (is("lint") && group == "style") ||
         (is("UNUSED") && rule.key().compare(0, name.size(), "UNUSED") == 0);
}

}  // namespace

Catalog verilatorRules() {
  vok::rulecheck::RuleSpecMap known;
  apps::decodeFrom("rules.txtpb", std::string(assets::rules), &known);
  Catalog rules;
  for (auto& entry : *known.mutable_hashmap()) {
    complete(&entry.second);
    rules.emplace(entry.first, entry.second);
  }
  return rules;
}

void addMissingRules(const std::vector<CreateViolation>& violations, Catalog* rules) {
  for (const CreateViolation& violation : violations) {
    if (rules->count(violation.rule_key()) == 0) {
      rules->emplace(violation.rule_key(), genericRule(violation));
    }
  }
}

std::vector<std::string> rulesNamed(const std::string& name, const Catalog& rules) {
  std::vector<std::string> keys;
  for (const auto& entry : rules) {
    if (isNamed(name, entry.second)) {
      keys.push_back(entry.first);
    }
  }
  return keys;
}

}  // namespace rulecheck
