// Counted allocations of this process.

#ifndef VOK_BENCHMARKS_SUPPORT_ALLOCATIONS_H_
#define VOK_BENCHMARKS_SUPPORT_ALLOCATIONS_H_

#include <cstdint>

namespace benchmarks {

struct Allocations {
  std::uint64_t number;
  std::uint64_t bytes;
};

}  // namespace benchmarks

// Those since the start of the process. Defined in allocation_counter.cpp, and
// null where that library is not preloaded.
extern "C" __attribute__((weak)) benchmarks::Allocations countedAllocations();

#endif  // VOK_BENCHMARKS_SUPPORT_ALLOCATIONS_H_
