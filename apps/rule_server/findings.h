// SPDX-License-Identifier: Apache-2.0

// What a finding is made of: the rule, and what the client says about the case.

#ifndef VOK_APPS_RULE_SERVER_FINDINGS_H_
#define VOK_APPS_RULE_SERVER_FINDINGS_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <cstdint>

namespace rule_server {

// The category of a violation that has the reason of its waiver, which the client sends as the
// dynamic category value "waiver".
constexpr std::int32_t kWaiverCategory = 1;

bool isWaived(const vok::rulecheck::CreateViolation& body);

// Without the id, which the caller sets. They take values and arguments out of the body. Throw
// Failure (CategoryRefused).
vok::rulecheck::Violation makeViolation(const vok::rulecheck::RuleSpec& rule,
                                        vok::rulecheck::CreateViolation* body);
vok::rulecheck::Affirmation makeAffirmation(const vok::rulecheck::RuleSpec& rule,
                                            vok::rulecheck::CreateAffirmation* body);

}  // namespace rule_server

#endif  // VOK_APPS_RULE_SERVER_FINDINGS_H_
