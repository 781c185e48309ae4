#include "common/command_line.h"

#include <exception>
#include <iostream>
#include <string>

namespace examples {

int run(CLI::App& app, int argc, const char* const* argv, const std::function<void()>& work) {
  try {
    app.parse(argc, argv);
    work();
    return 0;
  } catch (const CLI::Success& request) {
    return app.exit(request);
  } catch (const std::exception& error) {
    std::cerr << app.get_name() << ": " << error.what() << '\n';
    return 2;
  }
}

}  // namespace examples
