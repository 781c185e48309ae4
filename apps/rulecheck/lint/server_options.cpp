// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/lint/server_options.h"

#include <stdexcept>
#include <string>

namespace rulecheck {

std::function<Server()> addServerOptions(CLI::App& command, std::string* /*output*/) {
  command.add_option_function<std::string>(
      "--server",
      [](const std::string& /*address*/) {
        throw std::runtime_error("--server: this program was built without gRPC");
      },
      "Refused: this program was built without gRPC");
  return [] { return Server(); };
}

void addServe(CLI::App& app) {
  CLI::App* command = app.add_subcommand("serve", "Refused: this program was built without gRPC");
  command->allow_extras();
  command->footer("Example:\n  rulecheck serve --listen unix:/run/user/1000/rules --files reports");
  command->callback([] { throw std::runtime_error("serve: this program was built without gRPC"); });
}

}  // namespace rulecheck
