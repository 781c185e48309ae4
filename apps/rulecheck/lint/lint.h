// SPDX-License-Identifier: Apache-2.0

// `rulecheck lint`, but for what becomes of the result.

#ifndef VOK_APPS_RULECHECK_LINT_LINT_H_
#define VOK_APPS_RULECHECK_LINT_LINT_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "rulecheck/lint/report.h"

namespace rulecheck {

struct LintOptions {
  std::string verilator = "verilator";
  std::vector<std::string> arguments;
  std::vector<std::string> severities;
  std::vector<std::string> waivers;
};

void define(CLI::App& app, LintOptions& options);

struct LintReport {
  Catalog rules;
  std::vector<vok::rulecheck::CreateViolation> violations;
  // What to tell the user about waivers.
  std::vector<std::string> remarks;
};

// Runs Verilator. Throws apps::CannotRun if that can't be done, and std::runtime_error if an
// option or a file of waivers is malformed.
LintReport lint(const LintOptions& options);

// The session in which the findings are reported.
vok::rulecheck::StartSession sessionFor(const LintOptions& options);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_LINT_LINT_H_
