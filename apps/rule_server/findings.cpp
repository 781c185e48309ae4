// SPDX-License-Identifier: Apache-2.0

#include "rule_server/findings.h"

#include <charconv>
#include <cstddef>
#include <string>

#include "rule_server/errors.h"

namespace rule_server {
namespace {

using vok::rulecheck::Affirmation;
using vok::rulecheck::CreateAffirmation;
using vok::rulecheck::CreateViolation;
using vok::rulecheck::RuleSpec;
using vok::rulecheck::Violation;

const std::string kWaiver = "waiver";

// Whether the text refers to an argument: "%" and a number, "%%" being a percent
// sign.
bool namesArgument(const std::string& text) {
  std::size_t at = text.find('%');
  while (at != std::string::npos && at + 1 < text.size()) {
    if (text[at + 1] >= '0' && text[at + 1] <= '9') {
      return true;
    }
    at = text.find('%', at + 2);
  }
  return false;
}

Failure refusal(const std::string& category, const std::string& reason) {
  return Failure(ErrorCode::CategoryRefused,
                 "dynamic category " + quoted(category) + " is refused: " + reason);
}

// A dynamic category is named by its number in plain decimal digits.
std::int32_t dynamicCategory(const RuleSpec& rule, const std::string& name) {
  std::int32_t number = 0;
  std::from_chars(name.data(), name.data() + name.size(), number);
  const auto allowed = rule.dynamic_categories().find(number);
  if (std::to_string(number) != name || allowed == rule.dynamic_categories().end() ||
      !allowed->second) {
    throw refusal(name, "the rule has no such category");
  }
  return number;
}

// What violations and affirmations have in common.
template <typename Finding, typename Body>
void fill(const RuleSpec& rule, Body* body, Finding* finding) {
  finding->set_rule_key(rule.key());
  if (rule.has_examples()) {
    *finding->mutable_examples() = rule.examples();
  }
  if (rule.has_expects()) {
    finding->set_expects(rule.expects());
  }
  if (body->has_actual_value()) {
    finding->mutable_actual_value()->Swap(body->mutable_actual_value());
  }
  if (body->has_threshold_value()) {
    finding->mutable_threshold_value()->Swap(body->mutable_threshold_value());
  } else if (rule.has_threshold_value()) {
    *finding->mutable_threshold_value() = rule.threshold_value();
  }
  *finding->mutable_categories() = rule.categories();
}

template <typename Body>
void setMessage(const std::string& text, Body* body, vok::rulecheck::MsgInst* message) {
  message->set_text(text);
  if (body->has_args()) {
    message->mutable_args()->Swap(body->mutable_args());
  }
}

void addResolution(const RuleSpec& rule, const CreateViolation& body, Violation* violation) {
  if (!rule.has_resolution_msg()) {
    return;
  }
  violation->mutable_resolution()->set_text(rule.resolution_msg());
  if (body.has_args() && namesArgument(rule.resolution_msg())) {
    *violation->mutable_resolution()->mutable_args() = body.args();
  }
}

void addWaiver(const CreateViolation& body, Violation* violation) {
  const std::string& reason = body.dynamic_category_values().at(kWaiver);
  if (reason.empty()) {
    throw refusal(kWaiver, "a waiver needs a reason");
  }
  (*violation->mutable_categories())[kWaiverCategory] = reason;
}

vok::rulecheck::Violation_Severity severityOf(const RuleSpec& rule, const CreateViolation& body) {
  if (body.has_severity()) {
    return body.severity();
  }
  return rule.has_severity() ? rule.severity() : Violation::SEV_UNKNOWN;
}

}  // namespace

bool isWaived(const CreateViolation& body) {
  return body.dynamic_category_values().count(kWaiver) != 0;
}

Violation makeViolation(const RuleSpec& rule, CreateViolation* body) {
  Violation violation;
  fill(rule, body, &violation);
  violation.set_severity(severityOf(rule, *body));
  addResolution(rule, *body, &violation);
  setMessage(rule.has_raw_msg() ? rule.raw_msg() : rule.full_name(), body,
             violation.mutable_details());
  for (const auto& value : body->dynamic_category_values()) {
    if (value.first != kWaiver) {
      (*violation.mutable_categories())[dynamicCategory(rule, value.first)] = value.second;
    }
  }
  if (isWaived(*body)) {
    addWaiver(*body, &violation);
  }
  return violation;
}

Affirmation makeAffirmation(const RuleSpec& rule, CreateAffirmation* body) {
  Affirmation affirmation;
  fill(rule, body, &affirmation);
  setMessage(rule.has_affirm_msg() ? rule.affirm_msg() : rule.full_name(), body,
             affirmation.mutable_details());
  for (const auto& value : body->dynamic_category_values()) {
    (*affirmation.mutable_categories())[dynamicCategory(rule, value.first)] = value.second;
  }
  return affirmation;
}

}  // namespace rule_server
