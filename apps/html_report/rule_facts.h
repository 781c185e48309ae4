// SPDX-License-Identifier: Apache-2.0

// What the page tells about a rule.

#ifndef VOK_APPS_HTML_REPORT_RULE_FACTS_H_
#define VOK_APPS_HTML_REPORT_RULE_FACTS_H_

#include <vok/rulecheck/RuleService.pb.h>

#include "html_report/facts.h"

namespace html_report {

// What helps to understand the rule's findings: texts, limits, description.
Facts mainFacts(const vok::rulecheck::RuleSpec& spec);

// Everything else.
Facts furtherFacts(const vok::rulecheck::RuleSpec& spec);

}  // namespace html_report

#endif  // VOK_APPS_HTML_REPORT_RULE_FACTS_H_
