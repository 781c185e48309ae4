// SPDX-License-Identifier: Apache-2.0

// How the programs answer their users: a bad argument or file gives one line on the
// standard error output and exit status 2.

#ifndef VOK_APPS_COMMON_COMMAND_LINE_H_
#define VOK_APPS_COMMON_COMMAND_LINE_H_

#include <CLI/CLI.hpp>
#include <functional>
#include <stdexcept>

namespace apps {

// Something that a program needs for its work could not be run.
class CannotRun : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Parses the arguments into what app's options are bound to, and runs work.
// Returns the exit status: 0 after work or --help, 3 after CannotRun, 2 after a bad argument
// or any other exception from work, with oneLine() of the exception's text as the line. If memory
// runs out, the program says so and ends with 3.
// Nothing that the Protocol Buffers runtime logs is printed, and SIGXFSZ does not end the
// program.
int run(CLI::App& app, int argc, const char* const* argv, const std::function<void()>& work);

// For options whose value switches something on: an empty one is refused.
CLI::Validator notEmpty();

}  // namespace apps

#endif  // VOK_APPS_COMMON_COMMAND_LINE_H_
