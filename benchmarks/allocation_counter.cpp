// SPDX-License-Identifier: Apache-2.0

// A library to be preloaded into a process of one thread: counts its allocations. operator new of
// the C++ library calls malloc, so it is counted too.

#include <cstddef>
#include <cstdint>

extern "C" {

// The allocator of the C library under its other names.
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);

struct Allocations {  // as in measure.h
  std::uint64_t number;
  std::uint64_t bytes;
};

static Allocations counted = {0, 0};

static std::size_t count(std::size_t size) {
  ++counted.number;
  counted.bytes += size;
  return size;
}

Allocations countedAllocations() {
  return counted;
}

void* malloc(std::size_t size) {
  return __libc_malloc(count(size));
}

void* calloc(std::size_t number, std::size_t size) {
  count(number * size);
  return __libc_calloc(number, size);
}

void* realloc(void* memory, std::size_t size) {
  return __libc_realloc(memory, count(size));
}

}  // extern "C"
