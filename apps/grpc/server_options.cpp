// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/lint/server_options.h"

#include <stdlib.h>

#include <memory>
#include <string>

#include "common/held_signals.h"
#include "grpc/remote_server.h"
#include "grpc/security.h"

namespace rulecheck {

std::function<Server()> addServerOptions(CLI::App& command, std::string* output) {
  struct Options {
    std::string server;
    rule_grpc::Security security;
  };
  const auto options = std::make_shared<Options>();
  command.add_option("--server", options->server,
                     "Record the findings in this server: HOST:PORT or unix:PATH");
  rule_grpc::define(command, "--ca", "Authority of the server's certificate; without it, no TLS",
                    options->security);
  command.get_option("--certificate")->needs("--ca");
  command
      .add_option("--server-output", *output,
                  "A directory on the server, in which it writes report.html and session.pb")
      ->needs("--server");
  return [options]() -> Server {
    if (options->server.empty()) {
      return nullptr;
    }
    // gRPC's log would be more than the one line of an error.
    setenv("GRPC_VERBOSITY", "NONE", 0);
    // gRPC starts threads. One that took a signal would end the program with Verilator's
    // folder left behind.
    const apps::HeldSignals signals;
    return rule_grpc::remoteServer(rule_grpc::channelTo(options->server, options->security));
  };
}

}  // namespace rulecheck
