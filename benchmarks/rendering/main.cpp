// What rendering costs, beside other ways to do it.

#include <cstdio>
#include <exception>

#include "rendering/calls.h"
#include "rendering/equality.h"
#include "support/measure.h"

int main(int count, char** arguments) {
  const benchmarks::Findings findings = benchmarks::makeFindings(10000);
  const benchmarks::Findings scattered = benchmarks::makeScatteredFindings();
  try {
    benchmarks::requireEqualTexts(findings);
    benchmarks::registerCalls();
    benchmarks::registerNumbers();
    benchmarks::registerReports(findings, scattered);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", arguments[0], error.what());
    return 1;
  }
  return benchmarks::runBenchmarks(count, arguments);
}
