// SPDX-License-Identifier: Apache-2.0

// The commands that have a file of their own.

#ifndef VOK_APPS_RULECHECK_COMMANDS_H_
#define VOK_APPS_RULECHECK_COMMANDS_H_

#include <CLI/CLI.hpp>

namespace rulecheck {

// Adds the command that runs Verilator and writes what it found.
void addLint(CLI::App& app);

// Adds the command that records a result in a server.
void addSend(CLI::App& app);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_COMMANDS_H_
