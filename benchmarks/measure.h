// SPDX-License-Identifier: Apache-2.0

// How a benchmark runs, and what it reports in addition to its time.

#ifndef VOK_BENCHMARKS_MEASURE_H_
#define VOK_BENCHMARKS_MEASURE_H_

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>

// The allocations since the start of the process. Null unless allocation_counter.cpp is preloaded.
struct Allocations {
  std::uint64_t number;
  std::uint64_t bytes;
};
extern "C" __attribute__((weak)) Allocations countedAllocations();

namespace benchmarks {

// Ends the program before anything is timed: what is compared must be equal.
inline void require(bool condition, const std::string& what) {
  if (!condition) {
    throw std::runtime_error(what);
  }
}

// What one run handles: texts, requests or violations, and the bytes that it parses for them.
struct Work {
  std::size_t items;
  std::size_t wireBytes = 0;
};

// Times run(). Counts the allocations of one more run, if this process counts them.
template <typename Run>
void measure(const std::string& name, Work work, Run run) {
  benchmark::RegisterBenchmark(name.c_str(), [work, run](benchmark::State& state) mutable {
    for (auto _ : state) {
      run();
    }
    state.counters["items"] = static_cast<double>(work.items);
    state.counters["wire_bytes"] = static_cast<double>(work.wireBytes);
    if (countedAllocations != nullptr) {
      const Allocations before = countedAllocations();
      run();
      const Allocations after = countedAllocations();
      state.counters["allocations"] = static_cast<double>(after.number - before.number);
      state.counters["allocated_bytes"] = static_cast<double>(after.bytes - before.bytes);
    }
  });
}

// All of main(). prepare() checks what is compared and registers the benchmarks.
template <typename Prepare>
int runBenchmarks(int count, char** arguments, Prepare prepare) {
  try {
    prepare();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", arguments[0], error.what());
    return 1;
  }
  benchmark::Initialize(&count, arguments);
  if (benchmark::ReportUnrecognizedArguments(count, arguments)) {
    return 2;
  }
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}

}  // namespace benchmarks

#endif  // VOK_BENCHMARKS_MEASURE_H_
