// SPDX-License-Identifier: Apache-2.0

// Verilator's messages, as violations.

#ifndef VOK_APPS_RULECHECK_LINT_MESSAGES_H_
#define VOK_APPS_RULECHECK_LINT_MESSAGES_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <filesystem>
#include <string>
#include <vector>

namespace rulecheck {

// The rule of errors without a name.
constexpr char kErrorRule[] = "ERROR";

// Takes the standard error output of Verilator apart: a violation for each warning and
// error. Its arguments are the place, Verilator's text, the objects that the text names in
// quotes, the instance, links to other places, and advice. The severity is set for errors
// only. threshold_value and actual_value are set if the text compares two values.
//
// Left out are excerpts of sources, the totals, pointers to the manual, what $info prints,
// and lines that belong to no message. Files are relative to the directory.
std::vector<vok::rulecheck::CreateViolation> parseMessages(const std::string& output,
                                                           const std::filesystem::path& directory);

inline bool isError(const vok::rulecheck::CreateViolation& parsed) {
  return parsed.has_severity();
}

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_LINT_MESSAGES_H_
