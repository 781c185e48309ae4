// The allocations of a program of one thread: how many there are, and how to make
// some fail. Linking this replaces operator new and, in a program without a
// sanitizer, malloc.

#ifndef VOK_TESTS_LIBRARY_FAILURES_ALLOCATIONS_H_
#define VOK_TESTS_LIBRARY_FAILURES_ALLOCATIONS_H_

#include <cstddef>

namespace tests {

// How many allocations have not been freed yet.
std::ptrdiff_t outstandingAllocations();

// Makes one allocation of a scope fail: the first one if number is 0.
class FailingAllocation {
 public:
  explicit FailingAllocation(std::size_t number);
  ~FailingAllocation();
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;

  // Whether there was an allocation of that number.
  bool failed() const;
};

// Makes all allocations of a scope fail that are larger than that. Elsewhere
// operator new gives as much as the address space has room for: large blocks take
// memory when they are written to, and are zero before.
class AllocationLimit {
 public:
  explicit AllocationLimit(std::size_t bytes);
  ~AllocationLimit();
  AllocationLimit(const AllocationLimit&) = delete;
  AllocationLimit& operator=(const AllocationLimit&) = delete;
};

}  // namespace tests

#endif  // VOK_TESTS_LIBRARY_FAILURES_ALLOCATIONS_H_
