// SPDX-License-Identifier: Apache-2.0

// Checks Verilog sources with Verilator, and reports what it finds to a rule server
// through gRPC.

#include <stdlib.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <CLI/CLI.hpp>
#include <iostream>
#include <optional>
#include <string>

#include "common/command_line.h"
#include "common/held_signals.h"
#include "grpc/remote_server.h"
#include "grpc/security.h"
#include "lint_client/connection.h"
#include "lint_client/options.h"
#include "lint_client/report.h"
#include "lint_client/summary.h"

namespace {

struct Options {
  lint_client::Options lint;
  std::string server;
  rule_grpc::Security security;
};

void define(CLI::App& app, Options& options) {
  lint_client::define(app, options.lint);
  app.get_option("--output")->description("Directory for the report, as the server names it");
  app.add_option("--server", options.server, "HOST:PORT or unix:PATH")->required();
  rule_grpc::define(app, "--ca", "Authority of the server's certificate; without it, no TLS",
                    options.security);
  app.get_option("--certificate")->needs("--ca");
}

void work(const Options& options) {
  // gRPC starts threads. One that took a signal would end the program with Verilator's
  // folder left behind.
  std::optional<apps::HeldSignals> signals(std::in_place);
  lint_client::Connection connection(
      rule_grpc::remoteServer(rule_grpc::channelTo(options.server, options.security)));
  const lint_client::Findings findings = lint_client::findingsOf(options.lint);
  signals.reset();
  const auto session = lint_client::sessionFor(options.lint, options.lint.output);
  const auto result = lint_client::report(connection, session, findings);
  std::cout << lint_client::summary(result, connection, findings)
            << "The server's report: " << session.report_file().path() << '\n';
}

}  // namespace

int main(int argc, char** argv) {
  constexpr int kConnectionLost = 3;
  // gRPC's log would be more than the one line of an error.
  setenv("GRPC_VERBOSITY", "NONE", 0);
  CLI::App app("Checks Verilog sources with Verilator and reports what it finds through gRPC",
               "grpc_lint_client");
  Options options;
  define(app, options);
  bool lost = false;
  const int status = apps::run(app, argc, argv, [&] {
    try {
      work(options);
    } catch (const rule_grpc::ConnectionLost&) {
      lost = true;
      throw;
    }
  });
  return lost ? kConnectionLost : status;
}
