#include "support/counted_allocations.h"

#include <cstdlib>
#include <new>

namespace {

thread_local std::size_t count = 0;
thread_local std::size_t bytes = 0;

}  // namespace

std::size_t tests::allocations() {
  return count;
}

std::size_t tests::allocatedBytes() {
  return bytes;
}

// The C++ library's other forms of new and delete end up in these.
void* operator new(std::size_t size) {
  ++count;
  bytes += size;
  if (void* memory = std::malloc(size == 0 ? 1 : size)) {
    return memory;
  }
  throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
