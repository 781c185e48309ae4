// How a benchmark runs, and what it reports beside its time.

#ifndef VOK_BENCHMARKS_SUPPORT_MEASURE_H_
#define VOK_BENCHMARKS_SUPPORT_MEASURE_H_

#include <benchmark/benchmark.h>

#include <cstddef>
#include <stdexcept>
#include <string>

#include "support/allocations.h"

namespace benchmarks {

// Ends the program before anything is timed: what is compared must be equal.
inline void require(bool condition, const std::string& what) {
  if (!condition) {
    throw std::runtime_error(what);
  }
}

// Counts the allocations of one more run, if this process counts them.
template <typename Run>
void countAllocations(benchmark::State& state, Run run) {
  if (countedAllocations == nullptr) {
    return;
  }
  const Allocations before = countedAllocations();
  run();
  const Allocations after = countedAllocations();
  state.counters["allocations"] = static_cast<double>(after.number - before.number);
  state.counters["allocated_bytes"] = static_cast<double>(after.bytes - before.bytes);
}

// What one run handles: texts, requests or violations, and the bytes that are
// parsed for them.
struct Work {
  std::size_t items;
  std::size_t wireBytes = 0;
};

// Times run().
template <typename Run>
void measure(const std::string& name, Work work, Run run) {
  benchmark::RegisterBenchmark(name.c_str(), [work, run](benchmark::State& state) mutable {
    for (auto _ : state) {
      run();
    }
    state.counters["items"] = static_cast<double>(work.items);
    state.counters["wire_bytes"] = static_cast<double>(work.wireBytes);
    countAllocations(state, run);
  });
}

// Times run(), and nothing of prepare() before each.
template <typename Prepare, typename Run>
void measurePrepared(const std::string& name, Work work, Prepare prepare, Run run) {
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) mutable {
    for (auto _ : state) {
      state.PauseTiming();
      prepare();
      state.ResumeTiming();
      run();
    }
    state.counters["items"] = static_cast<double>(work.items);
  });
}

// The rest of main(), after everything is checked and registered.
inline int runBenchmarks(int count, char** arguments) {
  benchmark::Initialize(&count, arguments);
  if (benchmark::ReportUnrecognizedArguments(count, arguments)) {
    return 2;
  }
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}

}  // namespace benchmarks

#endif  // VOK_BENCHMARKS_SUPPORT_MEASURE_H_
