// SPDX-License-Identifier: Apache-2.0

// Runs a program without a shell.

#ifndef VOK_APPS_LINT_CLIENT_PROCESS_H_
#define VOK_APPS_LINT_CLIENT_PROCESS_H_

#include <filesystem>
#include <string>
#include <vector>

#include "common/held_signals.h"

namespace lint_client {

struct Ended {
  bool successfully;
  // What the program wrote on its standard error output.
  std::string errors;
};

// Runs a program in a directory and waits for its end. The first word names it, and
// is looked up in PATH if it has no "/" in it. Throws std::runtime_error if it can't
// be run. If a signal that is held arrives, kills the program and the processes that it
// started, and throws std::runtime_error.
Ended run(const std::vector<std::string>& words, const std::filesystem::path& directory,
          const apps::HeldSignals& signals);

}  // namespace lint_client

#endif  // VOK_APPS_LINT_CLIENT_PROCESS_H_
