// SPDX-License-Identifier: Apache-2.0

#include "rule_server/catalog.h"

#include <utility>

#include "rule_server/errors.h"
#include "rule_server/findings.h"

namespace rule_server {
namespace {

using vok::rulecheck::RuleSpec;

// Says what makes a rule invalid, or nothing.
std::string flawOf(const std::string& key, const RuleSpec& rule) {
  if (!hasKeyLength(key)) {
    return "a key has 1 to 255 bytes";
  }
  if (rule.key() != key) {
    return "it has the key " + quoted(key) + " in the file";
  }
  if (rule.full_name().empty()) {
    return "its full name is empty";
  }
  if (rule.categories().count(kWaiverCategory) != 0 ||
      rule.dynamic_categories().count(kWaiverCategory) != 0) {
    return "it uses category 1, which is for waivers";
  }
  return "";
}

}  // namespace

bool hasKeyLength(const std::string& key) {
  constexpr std::size_t kLongestKey = 255;
  return !key.empty() && key.size() <= kLongestKey;
}

Rule makeRule(const std::string& key, const RuleSpec& spec, const Limits& limits, Budget& budget) {
  const std::string flaw = flawOf(key, spec);
  if (!flaw.empty()) {
    throw Failure(ErrorCode::RuleInvalid, "rule " + quoted(spec.key()) + " is invalid: " + flaw);
  }
  const std::size_t bytes = spec.SpaceUsedLong();
  checkBytes([&] { return "rule " + quoted(key); }, bytes, limits.ruleBytes, "shorten it");
  // The catalog has the key, too.
  auto share = budget.take(bytes + 2 * sizeof(StoredRule) + key.size());
  return std::make_shared<const StoredRule>(StoredRule{spec, bytes, std::move(share)});
}

void Catalog::checkReplaceable(const std::string& key) const {
  const auto held = rules_.find(key);
  if (held != rules_.end() && held->second->spec.disposition() == RuleSpec::READONLY) {
    throw Failure(ErrorCode::RuleReadOnly, "rule " + quoted(key) + " is read-only");
  }
}

void Catalog::put(std::vector<Rule>* rules, const Limits& limits) {
  decltype(rules_) added;
  for (const Rule& rule : *rules) {
    if (rules_.count(rule->spec.key()) == 0) {
      added.emplace(rule->spec.key(), nullptr);
    }
  }
  const std::size_t count = rules_.size() + added.size();
  if (count > limits.rules) {
    throw Failure(ErrorCode::LimitExceeded,
                  "the catalog takes at most " + std::to_string(limits.rules) +
                      " rules: replace some, or restart the server with a higher limit");
  }
  rules_.reserve(count);
  // Nothing can fail from here on.
  rules_.merge(added);
  for (Rule& rule : *rules) {
    rules_.find(rule->spec.key())->second.swap(rule);
  }
}

Rule Catalog::inForce(const std::string& key) const {
  const auto held = rules_.find(key);
  if (held == rules_.end()) {
    throw Failure(ErrorCode::RuleUnknown, "no rule has the key " + quoted(key));
  }
  if (held->second->spec.disposition() == RuleSpec::PLANNED) {
    throw Failure(ErrorCode::RulePlanned, "rule " + quoted(key) + " is not in force yet");
  }
  return held->second;
}

std::vector<Rule> Catalog::all() const {
  std::vector<Rule> rules;
  rules.reserve(rules_.size());
  for (const auto& entry : rules_) {
    rules.push_back(entry.second);
  }
  return rules;
}

}  // namespace rule_server
