// SPDX-License-Identifier: Apache-2.0

// Runs Verilator.

#ifndef VOK_APPS_RULECHECK_LINT_VERILATOR_H_
#define VOK_APPS_RULECHECK_LINT_VERILATOR_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <string>
#include <vector>

#include "rulecheck/lint/catalog.h"

namespace rulecheck {

// Runs `verilator --lint-only -Wall -Wno-fatal ARGUMENTS` in the working directory. The
// program is looked up in PATH if it has no "/" in it. Returns a violation for each of its
// messages, and a waived one for each place that keeps Verilator from checking a rule (see
// unchecked.h). Throws apps::CannotRun, or std::runtime_error if a signal ends the program.
std::vector<vok::rulecheck::CreateViolation> lint(const std::string& program,
                                                  const std::vector<std::string>& arguments,
                                                  const Catalog& rules);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_LINT_VERILATOR_H_
