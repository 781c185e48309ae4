// SPDX-License-Identifier: Apache-2.0

// A result at a glance, for terminals.

#ifndef VOK_APPS_RULECHECK_SUMMARY_H_
#define VOK_APPS_RULECHECK_SUMMARY_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <string>
#include <vector>

namespace rulecheck {

// Counts of findings by severity, of waived ones and of rules that were affirmed or not
// checked everywhere, and then the remarks, a line each.
std::string summary(const vok::rulecheck::SessionResult& result,
                    const std::vector<std::string>& remarks);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_SUMMARY_H_
