// SPDX-License-Identifier: Apache-2.0

// The rules that findings are recorded for.

#ifndef VOK_APPS_RULE_SERVER_CATALOG_H_
#define VOK_APPS_RULE_SERVER_CATALOG_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <cstddef>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "rule_server/limits.h"

namespace rule_server {

// A rule that never changes: it is kept once, and findings refer to it, also when
// another one has replaced it in the catalog.
struct StoredRule {
  vok::rulecheck::RuleSpec spec;
  std::size_t bytes;
  Budget::Share share;
};

using Rule = std::shared_ptr<const StoredRule>;

// Whether a key can be that of a rule.
bool hasKeyLength(const std::string& key);

// Throws Failure (RuleInvalid, LimitExceeded).
Rule makeRule(const std::string& key, const vok::rulecheck::RuleSpec& spec, const Limits& limits,
              Budget& budget);

class Catalog {
 public:
  // Throws Failure (RuleReadOnly) if there is such a rule that can't be replaced.
  void checkReplaceable(const std::string& key) const;

  // Adds rules, whose keys differ, or replaces those with their keys, which are in rules
  // afterwards: the caller can destroy them without the lock. Throws Failure
  // (LimitExceeded) or std::bad_alloc, and changes nothing then.
  void put(std::vector<Rule>* rules, const Limits& limits);

  // The rule of that key, if findings may be recorded for it. Throws Failure
  // (RuleUnknown, RulePlanned).
  Rule inForce(const std::string& key) const;

  // The rule of that key, which the catalog has.
  Rule at(const std::string& key) const { return rules_.at(key); }

  std::vector<Rule> all() const;

 private:
  std::unordered_map<std::string, Rule> rules_;
};

}  // namespace rule_server

#endif  // VOK_APPS_RULE_SERVER_CATALOG_H_
