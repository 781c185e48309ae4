// The rules that findings are recorded for.

#ifndef VOK_EXAMPLES_RULE_SERVER_CATALOGUE_H_
#define VOK_EXAMPLES_RULE_SERVER_CATALOGUE_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <cstddef>
#include <string>

#include "rule_server/selection.h"

namespace rule_server {

class Catalogue {
 public:
  struct Loaded {
    std::size_t taken;
    std::size_t skipped;
  };

  // Adds a rule or replaces the one with its key. Throws Failure (RuleInvalid,
  // RuleReadOnly).
  void upsert(const vok::rulecheck::RuleSpec& rule);

  // Takes over the selected rules. One that upsert would refuse is skipped; with
  // validate it fails the whole load instead, which then changes nothing.
  Loaded load(const vok::rulecheck::RuleSpecMap& rules, const Selection& selection, bool validate);

  // The rule of that key, if findings may be recorded for it. Throws Failure
  // (RuleUnknown, RulePlanned).
  const vok::rulecheck::RuleSpec& inForce(const std::string& key) const;

  vok::rulecheck::RuleSpecMap selected(const Selection& selection) const;

  // Copies the rule of that key, which the catalogue has, into rules.
  void copy(const std::string& key, vok::rulecheck::RuleSpecMap* rules) const;

 private:
  void check(const std::string& key, const vok::rulecheck::RuleSpec& rule) const;
  void store(const vok::rulecheck::RuleSpec& rule);

  vok::rulecheck::RuleSpecMap rules_;
};

}  // namespace rule_server

#endif  // VOK_EXAMPLES_RULE_SERVER_CATALOGUE_H_
