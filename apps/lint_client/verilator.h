// SPDX-License-Identifier: Apache-2.0

// Runs Verilator.

#ifndef VOK_APPS_LINT_CLIENT_VERILATOR_H_
#define VOK_APPS_LINT_CLIENT_VERILATOR_H_

#include <string>
#include <vector>

#include "lint_client/messages.h"

namespace lint_client {

struct Job {
  std::vector<std::string> files;
  // The top module; empty if Verilator is to find it.
  std::string top;
  // Looked up in PATH if it has no "/" in it.
  std::string verilator = "verilator";
};

// What Verilator says about the files, in its order and with the user's names of
// files. Throws std::runtime_error, with one line of text, if Verilator can't be run
// or can't check the files.
std::vector<Message> lint(const Job& job);

}  // namespace lint_client

#endif  // VOK_APPS_LINT_CLIENT_VERILATOR_H_
