// SPDX-License-Identifier: Apache-2.0

#include "common/command_line.h"

#include <google/protobuf/stubs/logging.h>
#include <signal.h>

#include <exception>
#include <iostream>
#include <string>

#include "common/characters.h"

namespace apps {
namespace {

// What is wrong. If it is the file of options, its name comes first.
std::string messageOf(const CLI::App& app, const std::exception& error) {
  const bool isOfFile = dynamic_cast<const CLI::ConfigError*>(&error) != nullptr;
  return (isOfFile ? app.get_config_ptr()->as<std::string>() + ": " : "") + error.what();
}

}  // namespace

int run(CLI::App& app, int argc, const char* const* argv, const std::function<void()>& work) {
  // Protocol Buffers would add lines of its own to an error's.
  google::protobuf::SetLogHandler(nullptr);
  // A file that is too long is an error, not the program's end.
  signal(SIGXFSZ, SIG_IGN);
  try {
    app.parse(argc, argv);
    work();
    return 0;
  } catch (const CLI::Success& request) {
    return app.exit(request);
  } catch (const std::exception& error) {
    std::cerr << app.get_name() << ": " << oneLine(messageOf(app, error)) << '\n';
    return dynamic_cast<const CannotRun*>(&error) == nullptr ? 2 : 3;
  }
}

CLI::Validator notEmpty() {
  return {[](const std::string& value) { return value.empty() ? "is empty" : std::string(); }, ""};
}

}  // namespace apps
