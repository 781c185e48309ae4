// What carrying costs with the library's messages. Built with several forms of
// the library.

#include <cstdio>
#include <exception>

#include "carrying/carriers.h"
#include "support/measure.h"

int main(int count, char** arguments) {
  try {
    benchmarks::registerMessages();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", arguments[0], error.what());
    return 1;
  }
  return benchmarks::runBenchmarks(count, arguments);
}
