// SPDX-License-Identifier: Apache-2.0

// What a client is told on its command line, and what it makes of that.

#ifndef VOK_APPS_LINT_CLIENT_OPTIONS_H_
#define VOK_APPS_LINT_CLIENT_OPTIONS_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <string>
#include <vector>

#include "lint_client/report.h"
#include "lint_client/verilator.h"

namespace lint_client {

struct Options {
  Job job;
  std::string output = ".";
  std::vector<std::string> waivers;
  bool asText = false;
};

void define(CLI::App& app, Options& options);

// Runs Verilator. Throws std::runtime_error if it can't be run or the files can't be
// checked, or if a waiver is malformed.
Findings findingsOf(const Options& options);

// The session to open, with the addresses of report.html and of the session's result
// in the directory.
vok::rulecheck::StartSession sessionFor(const Options& options,
                                        const std::filesystem::path& directory);

}  // namespace lint_client

#endif  // VOK_APPS_LINT_CLIENT_OPTIONS_H_
