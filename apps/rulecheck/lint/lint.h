// SPDX-License-Identifier: Apache-2.0

#ifndef VOK_APPS_RULECHECK_LINT_LINT_H_
#define VOK_APPS_RULECHECK_LINT_LINT_H_

#include <CLI/CLI.hpp>

namespace rulecheck {

// Adds the command "lint", which runs Verilator and writes what it found.
void addLint(CLI::App& app);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_LINT_LINT_H_
