// SPDX-License-Identifier: Apache-2.0

// Runs a program without a shell.

#ifndef VOK_APPS_RULECHECK_LINT_PROCESS_H_
#define VOK_APPS_RULECHECK_LINT_PROCESS_H_

#include <string>
#include <vector>

#include "common/held_signals.h"

namespace rulecheck {

struct Ended {
  // That of a shell: 128 and the signal's number if one ended the program.
  int status;
  // What the program wrote to the descriptor.
  std::string output;
};

// Runs a program and waits for its end. The first word names it, and is looked up in PATH
// if it has no "/" in it. What it writes to the descriptor, that of the standard output or of
// errors, is kept, and the rest is lost. Throws apps::CannotRun. If a signal that is held arrives,
// kills the program and the processes that it started, and throws std::runtime_error.
Ended run(const std::vector<std::string>& words, int descriptor, const apps::HeldSignals& signals);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_LINT_PROCESS_H_
