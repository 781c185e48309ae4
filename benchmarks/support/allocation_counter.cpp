// A library to be preloaded: counts the allocations of a process. operator new
// of the C++ library allocates through malloc, so that it is counted too.
// For processes of one thread.

#include <cerrno>
#include <cstddef>

#include "support/allocations.h"

extern "C" {

// The allocator of the C library under its other names.
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);

static benchmarks::Allocations counted = {0, 0};

static void count(std::size_t size) {
  ++counted.number;
  counted.bytes += size;
}

benchmarks::Allocations countedAllocations() {
  return counted;
}

void* malloc(std::size_t size) {
  count(size);
  return __libc_malloc(size);
}

void* calloc(std::size_t number, std::size_t size) {
  count(number * size);
  return __libc_calloc(number, size);
}

void* realloc(void* memory, std::size_t size) {
  count(size);
  return __libc_realloc(memory, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
  count(size);
  return __libc_memalign(alignment, size);
}

int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
  count(size);
  *memory = __libc_memalign(alignment, size);
  return *memory == nullptr ? ENOMEM : 0;
}

}  // extern "C"
