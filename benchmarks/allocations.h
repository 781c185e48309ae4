// The allocations of this process.

#ifndef VOK_BENCHMARKS_ALLOCATIONS_H_
#define VOK_BENCHMARKS_ALLOCATIONS_H_

#include <cstdint>

namespace benchmarks {

struct Allocations {
  std::uint64_t number;
  std::uint64_t bytes;
};

}  // namespace benchmarks

// Those since the start of the process. Defined in allocation_counter.cpp; null unless that library
// is preloaded.
extern "C" __attribute__((weak)) benchmarks::Allocations countedAllocations();

#endif  // VOK_BENCHMARKS_ALLOCATIONS_H_
