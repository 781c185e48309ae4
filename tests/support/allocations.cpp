// SPDX-License-Identifier: Apache-2.0

#include "support/allocations.h"

#include <malloc.h>
#include <sys/mman.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <new>

namespace {

constexpr std::size_t unlimited = std::numeric_limits<std::size_t>::max();

thread_local std::size_t countOfThread = 0;
std::atomic<std::ptrdiff_t> outstanding{0};
std::atomic<std::size_t> taken{0};
std::atomic<std::size_t> mostTaken{0};
std::size_t limit = unlimited;
std::size_t beforeFailure = unlimited;
bool hasFailed = false;

bool mustFail(std::size_t size) {
  if (beforeFailure != unlimited && beforeFailure-- == 0) {
    hasFailed = true;
    return true;
  }
  return size > limit;
}

std::size_t sizeOf(void* block) {
  return malloc_usable_size(block) + sizeof(std::size_t);
}

void* allocateSmall(std::size_t size) {
  void* const block = std::malloc(size);
  const std::size_t now = taken += sizeOf(block);
  mostTaken = std::max(mostTaken.load(), now);
  return block;
}

struct LargeBlock {
  void* start;
  std::size_t size;
} largeBlocks[8];

LargeBlock* findLargeBlock(const void* start) {
  auto* const found = std::find_if(std::begin(largeBlocks), std::end(largeBlocks),
                                   [start](const LargeBlock& b) { return b.start == start; });
  return found == std::end(largeBlocks) ? nullptr : found;
}

void* allocateLarge(std::size_t size) {
  LargeBlock* const free = findLargeBlock(nullptr);
  void* const start = mmap(nullptr, size, PROT_READ | PROT_WRITE,
                           MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (free == nullptr || start == MAP_FAILED) {
    return nullptr;
  }
  madvise(start, size, MADV_HUGEPAGE);  // quicker, where the kernel has such pages
  *free = {start, size};
  return start;
}

}  // namespace

// The C++ library's other forms of new and delete call these.
void* operator new(std::size_t size) {
  void* block = nullptr;
  if (!mustFail(size)) {
    block = size < std::size_t{1} << 30 ? allocateSmall(size) : allocateLarge(size);
  }
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  ++countOfThread;
  ++outstanding;
  return block;
}

// A sanitizer's own form would not match the delete below.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  try {
    return operator new(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

void operator delete(void* block) noexcept {
  if (block == nullptr) {
    return;
  }
  --outstanding;
  if (LargeBlock* const large = findLargeBlock(block)) {
    munmap(large->start, large->size);
    *large = {};
    return;
  }
  taken -= sizeOf(block);
  std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
  operator delete(block);
}

namespace tests {

std::size_t allocations() {
  return countOfThread;
}

std::ptrdiff_t outstandingAllocations() {
  return outstanding;
}

HeapMeter::HeapMeter() : before_(taken) {
  mostTaken = before_;
}

std::size_t HeapMeter::peak() const {
  return mostTaken - before_;
}

FailingAllocation::FailingAllocation(std::size_t number) {
  hasFailed = false;
  beforeFailure = number;
}

FailingAllocation::~FailingAllocation() {
  beforeFailure = unlimited;
}

bool FailingAllocation::failed() const {
  return hasFailed;
}

AllocationLimit::AllocationLimit(std::size_t bytes) {
  limit = bytes;
}

AllocationLimit::~AllocationLimit() {
  limit = unlimited;
}

}  // namespace tests
