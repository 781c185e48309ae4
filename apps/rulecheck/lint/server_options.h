// SPDX-License-Identifier: Apache-2.0

// The options of commands for a server that other programs use, too, and the command that is
// one. grpc/ has them, and server_options.cpp refuses them in a build without gRPC.

#ifndef VOK_APPS_RULECHECK_LINT_SERVER_OPTIONS_H_
#define VOK_APPS_RULECHECK_LINT_SERVER_OPTIONS_H_

#include <CLI/CLI.hpp>
#include <functional>
#include <string>

#include "rulecheck/lint/report.h"

namespace rulecheck {

// Adds the options; output gets the directory of --server-output. Call the result when they are
// parsed: it returns the server, or null if none is named. Throws std::runtime_error if an address
// or a file is malformed.
std::function<Server()> addServerOptions(CLI::App& command, std::string* output);

// Adds the command that serves a rule server.
void addServe(CLI::App& app);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_LINT_SERVER_OPTIONS_H_
