// SPDX-License-Identifier: Apache-2.0

// Runs a program without a shell.

#ifndef VOK_APPS_RULECHECK_LINT_PROCESS_H_
#define VOK_APPS_RULECHECK_LINT_PROCESS_H_

#include <string>
#include <vector>

#include "common/held_signals.h"

namespace rulecheck {

struct Ended {
  bool successfully;
  // What the program wrote on its standard error output.
  std::string errors;
};

// Runs a program and waits for its end. The first word names it, and is looked up in PATH
// if it has no "/" in it. Throws apps::CannotRun. If a signal that is held arrives, kills the
// program and the processes that it started, and throws std::runtime_error.
Ended run(const std::vector<std::string>& words, const apps::HeldSignals& signals);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_LINT_PROCESS_H_
