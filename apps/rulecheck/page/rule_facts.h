// SPDX-License-Identifier: Apache-2.0

// What the page tells about a rule.

#ifndef VOK_APPS_RULECHECK_PAGE_RULE_FACTS_H_
#define VOK_APPS_RULECHECK_PAGE_RULE_FACTS_H_

#include <vok/rulecheck/RuleService.pb.h>

#include "rulecheck/page/facts.h"

namespace rulecheck {

// What helps to understand the rule's findings: texts, limits, description.
Facts mainFacts(const vok::rulecheck::RuleSpec& spec);

// Everything else.
Facts furtherFacts(const vok::rulecheck::RuleSpec& spec);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_PAGE_RULE_FACTS_H_
