// SPDX-License-Identifier: Apache-2.0

// The commands that read results.

#ifndef VOK_APPS_RULECHECK_COMMANDS_H_
#define VOK_APPS_RULECHECK_COMMANDS_H_

#include <CLI/CLI.hpp>

namespace rulecheck {

// Each adds a command, which does its work while the arguments are parsed. A gate that
// decides no sets *status to 1.
void addHtml(CLI::App& app);
void addConversions(CLI::App& app);
void addSarif(CLI::App& app);
void addImport(CLI::App& app);
void addMerge(CLI::App& app);
void addDiff(CLI::App& app);
void addGate(CLI::App& app, int* status);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_COMMANDS_H_
