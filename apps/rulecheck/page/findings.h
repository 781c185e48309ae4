// SPDX-License-Identifier: Apache-2.0

// The findings of a session, grouped by rule, as HTML.

#ifndef VOK_APPS_RULECHECK_PAGE_FINDINGS_H_
#define VOK_APPS_RULECHECK_PAGE_FINDINGS_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <string>
#include <vector>

namespace rulecheck {

struct Presentation {
  std::string idPrefix;  // of the findings' elements; the rest is the number
  bool open;             // whether the script leaves the groups open at first
  std::string kind;      // what the filter takes the findings for; "": their level
};

// The groups, a block of them in each string. The most serious group comes first,
// and the most serious finding of each. The rule of a finding is looked up by its
// key in specs, and then in otherSpecs.
std::vector<std::string> blocksHtml(const vok::rulecheck::ViolationMap& violations,
                                    const vok::rulecheck::RuleSpecMap& specs,
                                    const vok::rulecheck::RuleSpecMap& otherSpecs,
                                    const Presentation& presentation);
std::vector<std::string> blocksHtml(const vok::rulecheck::AffirmationMap& affirmations,
                                    const vok::rulecheck::RuleSpecMap& specs,
                                    const vok::rulecheck::RuleSpecMap& otherSpecs,
                                    const Presentation& presentation);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_PAGE_FINDINGS_H_
