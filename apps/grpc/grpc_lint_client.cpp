// SPDX-License-Identifier: Apache-2.0

// Checks Verilog sources with Verilator, and reports what it finds to a rule server
// through gRPC.

#include <stdlib.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>

#include "common/command_line.h"
#include "common/held_signals.h"
#include "grpc/remote_server.h"
#include "grpc/security.h"
#include "rulecheck/lint/lint.h"
#include "rulecheck/lint/report.h"
#include "rulecheck/summary.h"

namespace {

struct Options {
  rulecheck::LintOptions lint;
  std::string output = ".";
  bool asText = false;
  std::string server;
  rule_grpc::Security security;
};

void define(CLI::App& app, Options& options) {
  rulecheck::define(app, options.lint);
  app.add_option("--output", options.output, "Directory for the report, as the server names it")
      ->capture_default_str();
  app.add_flag("--text", options.asText, "Write session.txtpb instead of session.pb");
  app.add_option("--server", options.server, "HOST:PORT or unix:PATH")->required();
  rule_grpc::define(app, "--ca", "Authority of the server's certificate; without it, no TLS",
                    options.security);
  app.get_option("--certificate")->needs("--ca");
}

void setFile(const Options& options, const char* name, vok::rulecheck::Resource* address) {
  address->set_scheme(vok::rulecheck::Resource::FILE);
  address->set_path((std::filesystem::path(options.output) / name).string());
}

void work(const Options& options) {
  // gRPC starts threads. One that took a signal would end the program with Verilator's
  // folder left behind.
  std::optional<apps::HeldSignals> signals(std::in_place);
  const rulecheck::Server server =
      rule_grpc::remoteServer(rule_grpc::channelTo(options.server, options.security));
  const rulecheck::LintReport findings = rulecheck::lint(options.lint);
  signals.reset();
  auto session = rulecheck::sessionFor(options.lint);
  setFile(options, "report.html", session.mutable_report_file());
  setFile(options, options.asText ? "session.txtpb" : "session.pb", session.mutable_proto_file());
  const auto result = rulecheck::report(server, session, findings.rules, findings.violations);
  std::cout << rulecheck::summary(result, findings.remarks)
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
