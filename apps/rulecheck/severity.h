// SPDX-License-Identifier: Apache-2.0

// How serious a finding is, in words.

#ifndef VOK_APPS_RULECHECK_SEVERITY_H_
#define VOK_APPS_RULECHECK_SEVERITY_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <optional>
#include <string>
#include <vector>

namespace rulecheck {

struct Level {
  int rank;          // 0 is the most serious
  std::string word;  // for people
  std::string slug;  // for style and script
};

// The word is Converter's. SEV_UNKNOWN, a severity that is absent or not listed,
// reads "unknown".
Level levelOf(vok::rulecheck::Violation::Severity severity);
Level levelOf(const vok::rulecheck::Violation& violation);

// The levels of violations, the most serious first.
std::vector<Level> violationLevels();

// The severity of that slug; none for other texts.
std::optional<vok::rulecheck::Violation_Severity> severityNamed(const std::string& slug);

// "fatal, error, critical-warning, warning, advisory"
std::string severityNames();

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_SEVERITY_H_
