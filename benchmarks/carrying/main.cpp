// SPDX-License-Identifier: Apache-2.0

// Benchmarks of the library's messages. With ALTERNATIVES also of other sizes and other libraries.

#include "carrying/carrying.h"

int main(int count, char** arguments) {
  return benchmarks::runBenchmarks(count, arguments, [] {
    benchmarks::registerMessages();
#ifdef ALTERNATIVES
    benchmarks::registerGrowth();
    benchmarks::registerProtozero();
    benchmarks::registerRapidJson();
#endif
  });
}
