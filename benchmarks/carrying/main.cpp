// What carrying costs, beside other ways to do it.

#include <cstdio>
#include <exception>

#include "carrying/carriers.h"
#include "support/measure.h"

int main(int count, char** arguments) {
  try {
    benchmarks::registerMessages();
    benchmarks::registerGrowth();
    benchmarks::registerUnusual();
    benchmarks::registerMemory();
    benchmarks::registerProtozero();
    benchmarks::registerProtobufC();
    benchmarks::registerNanopb();
    benchmarks::registerJson();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", arguments[0], error.what());
    return 1;
  }
  return benchmarks::runBenchmarks(count, arguments);
}
