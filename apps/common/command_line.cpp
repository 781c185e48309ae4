// SPDX-License-Identifier: Apache-2.0

#include "common/command_line.h"

#include <fcntl.h>
#include <google/protobuf/stubs/logging.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <initializer_list>
#include <iostream>
#include <new>
#include <string>

#include "common/characters.h"

namespace apps {
namespace {

// What is wrong. If it is the file of options, its name comes first.
std::string messageOf(const CLI::App& app, const std::exception& error) {
  const bool isOfFile = dynamic_cast<const CLI::ConfigError*>(&error) != nullptr;
  return (isOfFile ? app.get_config_ptr()->as<std::string>() + ": " : "") + error.what();
}

// A file that the program opens must not get the number of a standard descriptor that is
// closed, and with it what is written there. Writing to this one fails, too.
void fillStandardDescriptors() {
  for (const int each : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(each, F_GETFD) < 0) {
      open("/", O_PATH);
    }
  }
}

// Where a destructor asks for memory and there is none, the exception gets here.
[[noreturn]] void terminate() {
  try {
    std::rethrow_exception(std::current_exception());
  } catch (const std::bad_alloc&) {
    dprintf(STDERR_FILENO, "%s: out of memory\n", program_invocation_short_name);
    _exit(3);
  } catch (...) {
    std::abort();
  }
}

}  // namespace

int run(CLI::App& app, int argc, const char* const* argv, const std::function<void()>& work) {
  fillStandardDescriptors();
  // Protocol Buffers would add lines of its own to an error's.
  google::protobuf::SetLogHandler(nullptr);
  // A file that is too long is an error, not the program's end.
  signal(SIGXFSZ, SIG_IGN);
  std::set_terminate(terminate);
  try {
    app.parse(argc, argv);
    work();
    return 0;
  } catch (const CLI::Success& request) {
    return app.exit(request);
  } catch (const std::bad_alloc&) {
    terminate();
  } catch (const std::exception& error) {
    std::cerr << app.get_name() << ": " << oneLine(messageOf(app, error)) << '\n';
    return dynamic_cast<const CannotRun*>(&error) == nullptr ? 2 : 3;
  }
}

CLI::Validator notEmpty() {
  return {[](const std::string& value) { return value.empty() ? "is empty" : std::string(); }, ""};
}

}  // namespace apps
