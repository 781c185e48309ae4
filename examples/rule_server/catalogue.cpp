#include "rule_server/catalogue.h"

#include <map>
#include <vector>

#include "rule_server/errors.h"
#include "rule_server/findings.h"

namespace rule_server {
namespace {

using vok::rulecheck::RuleSpec;
using vok::rulecheck::RuleSpecMap;

// Says what makes a rule invalid, or nothing.
std::string flawOf(const std::string& key, const RuleSpec& rule) {
  constexpr std::size_t kLongestKey = 255;
  if (key.empty() || key.size() > kLongestKey) {
    return "a key has 1 to 255 bytes";
  }
  if (rule.key() != key) {
    return "it stands under the key " + quoted(key);
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

void Catalogue::check(const std::string& key, const RuleSpec& rule) const {
  const std::string flaw = flawOf(key, rule);
  if (!flaw.empty()) {
    throw Failure(ErrorCode::RuleInvalid, "rule " + quoted(rule.key()) + " is invalid: " + flaw);
  }
  const auto held = rules_.hashmap().find(key);
  if (held != rules_.hashmap().end() && held->second.disposition() == RuleSpec::READONLY) {
    throw Failure(ErrorCode::RuleReadOnly, "rule " + quoted(key) + " is read-only");
  }
}

void Catalogue::store(const RuleSpec& rule) {
  (*rules_.mutable_hashmap())[rule.key()] = rule;
}

void Catalogue::upsert(const RuleSpec& rule) {
  check(rule.key(), rule);
  store(rule);
}

Catalogue::Loaded Catalogue::load(const RuleSpecMap& rules, const Selection& selection,
                                  bool validate) {
  std::vector<const RuleSpec*> taken;
  std::map<std::string, Failure> refused;
  for (const auto& entry : rules.hashmap()) {
    if (!selection.matches(entry.first)) {
      continue;
    }
    try {
      check(entry.first, entry.second);
      taken.push_back(&entry.second);
    } catch (const Failure& failure) {
      refused.emplace(entry.first, failure);
    }
  }
  if (validate && !refused.empty()) {
    throw refused.begin()->second;
  }
  for (const RuleSpec* rule : taken) {
    store(*rule);
  }
  return {taken.size(), refused.size()};
}

const RuleSpec& Catalogue::inForce(const std::string& key) const {
  const auto held = rules_.hashmap().find(key);
  if (held == rules_.hashmap().end()) {
    throw Failure(ErrorCode::RuleUnknown, "no rule has the key " + quoted(key));
  }
  if (held->second.disposition() == RuleSpec::PLANNED) {
    throw Failure(ErrorCode::RulePlanned, "rule " + quoted(key) + " is not in force yet");
  }
  return held->second;
}

RuleSpecMap Catalogue::selected(const Selection& selection) const {
  RuleSpecMap chosen;
  for (const auto& entry : rules_.hashmap()) {
    if (selection.matches(entry.first)) {
      copy(entry.first, &chosen);
    }
  }
  return chosen;
}

void Catalogue::copy(const std::string& key, RuleSpecMap* rules) const {
  (*rules->mutable_hashmap())[key] = rules_.hashmap().at(key);
}

}  // namespace rule_server
