// SPDX-License-Identifier: Apache-2.0

#include "support/allocations.h"

#include <sys/mman.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <new>

// A sanitizer has a malloc of its own, which can't be replaced.
#ifdef SANITIZED
#define VOK_LIBC(function) std::function
#else
#define VOK_LIBC(function) __libc_##function
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void __libc_free(void* block);
}
#endif

namespace {

constexpr std::size_t unlimited = std::numeric_limits<std::size_t>::max();
constexpr std::size_t large = std::size_t{1} << 30;

thread_local std::size_t countOfThread = 0;
thread_local std::size_t bytesOfThread = 0;
std::atomic<std::ptrdiff_t> outstanding{0};
std::atomic<std::size_t> taken{0};
std::atomic<std::size_t> mostTaken{0};
std::size_t limit = unlimited;
std::size_t beforeFailure = unlimited;
bool failed = false;

bool isToFail(std::size_t size) {
  if (size > limit) {
    return true;
  }
  if (beforeFailure == unlimited) {
    return false;
  }
  if (beforeFailure > 0) {
    --beforeFailure;
    return false;
  }
  beforeFailure = unlimited;
  failed = true;
  return true;
}

// Before each block of operator new is its size. Asking the allocator for it would
// give another answer under a sanitizer.
constexpr std::size_t header = 16;

// What the C library's allocator takes for a block of that size.
std::size_t withOverhead(std::size_t size) {
  return std::max(std::size_t{32}, (size + 8 + 15) / 16 * 16);
}

void* allocateSmall(std::size_t size) {
  auto* const start = static_cast<char*>(VOK_LIBC(malloc)(header + size));
  if (start == nullptr) {
    return nullptr;
  }
  *reinterpret_cast<std::size_t*>(start) = size;
  const std::size_t now = taken += withOverhead(size);
  mostTaken = std::max(mostTaken.load(), now);
  return start + header;
}

struct LargeBlock {
  void* start;
  std::size_t size;
};
LargeBlock largeBlocks[8] = {};

LargeBlock* findLargeBlock(const void* start) {
  const auto place = std::find_if(std::begin(largeBlocks), std::end(largeBlocks),
                                  [start](const LargeBlock& b) { return b.start == start; });
  return place == std::end(largeBlocks) ? nullptr : place;
}

void* allocateLarge(std::size_t size) {
  LargeBlock* const place = findLargeBlock(nullptr);
  if (place == nullptr) {
    return nullptr;
  }
  void* const start = mmap(nullptr, size, PROT_READ | PROT_WRITE,
                           MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (start == MAP_FAILED) {
    return nullptr;
  }
  madvise(start, size, MADV_HUGEPAGE);  // quicker, where the kernel has such pages
  *place = {start, size};
  return start;
}

}  // namespace

// The C++ library's other forms of new and delete call these.
void* operator new(std::size_t size) {
  void* block = nullptr;
  if (!isToFail(size)) {
    block = size < large ? allocateSmall(size) : allocateLarge(size);
  }
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  ++countOfThread;
  bytesOfThread += size;
  ++outstanding;
  return block;
}

void operator delete(void* block) noexcept {
  if (block == nullptr) {
    return;
  }
  --outstanding;
  LargeBlock* const place = findLargeBlock(block);
  if (place == nullptr) {
    char* const start = static_cast<char*>(block) - header;
    taken -= withOverhead(*reinterpret_cast<std::size_t*>(start));
    VOK_LIBC(free)(start);
    return;
  }
  munmap(place->start, place->size);
  *place = {};
}

void operator delete(void* block, std::size_t) noexcept {
  operator delete(block);
}

#ifndef SANITIZED
namespace {

void* counted(void* block) {
  outstanding += block != nullptr ? 1 : 0;
  return block;
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) noexcept {
  return isToFail(size) ? nullptr : counted(__libc_malloc(size));
}

void* calloc(std::size_t count, std::size_t size) noexcept {
  return isToFail(count * size) ? nullptr : counted(__libc_calloc(count, size));
}

void* realloc(void* block, std::size_t size) noexcept {
  if (isToFail(size)) {
    return nullptr;
  }
  void* const moved = __libc_realloc(block, size);
  return block == nullptr ? counted(moved) : moved;
}

void free(void* block) noexcept {
  outstanding -= block != nullptr ? 1 : 0;
  __libc_free(block);
}

}  // extern "C"
#endif

namespace tests {

std::size_t allocations() {
  return countOfThread;
}

std::size_t allocatedBytes() {
  return bytesOfThread;
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
  ::failed = false;
  beforeFailure = number;
}

FailingAllocation::~FailingAllocation() {
  beforeFailure = unlimited;
}

bool FailingAllocation::failed() const {
  return ::failed;
}

AllocationLimit::AllocationLimit(std::size_t bytes) {
  limit = bytes;
}

AllocationLimit::~AllocationLimit() {
  limit = unlimited;
}

}  // namespace tests
