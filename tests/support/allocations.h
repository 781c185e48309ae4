// SPDX-License-Identifier: Apache-2.0

// The allocations of a program: how many there are, how much they take, and how to
// make some fail. Linking this replaces operator new.

#ifndef VOK_TESTS_SUPPORT_ALLOCATIONS_H_
#define VOK_TESTS_SUPPORT_ALLOCATIONS_H_

#include <cstddef>

namespace tests {

// How often the calling thread has allocated.
std::size_t allocations();

// How many blocks have not been freed yet.
std::ptrdiff_t outstandingAllocations();

// The most memory that was allocated since the meter's construction, with
// the C library's overhead. One meter at a time, in one thread.
class HeapMeter {
 public:
  HeapMeter();
  std::size_t peak() const;

 private:
  std::size_t before_;
};

// Makes one allocation of a scope fail, in a program of one thread: the first one if
// number is 0.
class FailingAllocation {
 public:
  explicit FailingAllocation(std::size_t number);
  ~FailingAllocation();

  // Whether there was an allocation of that number.
  bool failed() const;
};

// Makes all allocations of a scope fail that are larger than that. Elsewhere
// operator new gives as much as the address space has room for: large blocks begin
// with a page, take memory when they are written to, and are zero before.
class AllocationLimit {
 public:
  explicit AllocationLimit(std::size_t bytes);
  ~AllocationLimit();
};

}  // namespace tests

#endif  // VOK_TESTS_SUPPORT_ALLOCATIONS_H_
