#include "malformed_input/heap_meter.h"

#include <algorithm>
#include <cstdlib>
#include <new>

namespace {

std::size_t taken = 0;
std::size_t mostTaken = 0;

// In front of each block stands its size. Asking the allocator for it would give
// another answer under a sanitizer.
constexpr std::size_t kFront = 16;

// What the C library's allocator takes for a block of that size.
std::size_t withOverhead(std::size_t size) {
  constexpr std::size_t kHeader = 8;
  constexpr std::size_t kUnit = 16;
  constexpr std::size_t kLeast = 32;
  return std::max(kLeast, (size + kHeader + kUnit - 1) / kUnit * kUnit);
}

}  // namespace

void* operator new(std::size_t size) {
  auto* front = static_cast<char*>(std::malloc(kFront + size));
  if (front == nullptr) {
    throw std::bad_alloc();
  }
  *reinterpret_cast<std::size_t*>(front) = size;
  taken += withOverhead(size);
  mostTaken = std::max(mostTaken, taken);
  return front + kFront;
}

void operator delete(void* block) noexcept {
  if (block != nullptr) {
    char* front = static_cast<char*>(block) - kFront;
    taken -= withOverhead(*reinterpret_cast<std::size_t*>(front));
    std::free(front);
  }
}

void operator delete(void* block, std::size_t) noexcept {
  operator delete(block);
}

namespace tests {

HeapMeter::HeapMeter() : before_(taken) {
  mostTaken = taken;
}

std::size_t HeapMeter::peak() const {
  return mostTaken - before_;
}

}  // namespace tests
