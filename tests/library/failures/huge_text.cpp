// SPDX-License-Identifier: Apache-2.0

#include "huge_text.h"

#include <sys/mman.h>

#include <new>

namespace tests {

std::string hugeText(std::size_t size) {
  std::string text;
  // The kernel writes the zeros: it gives pages that are zero when they are read.
  // What support/allocations.cpp gives for so large a text begins with a page.
  text.resize_and_overwrite(size, [](char* start, std::size_t length) {
    return madvise(start, length, MADV_DONTNEED) == 0 ? length : 0;
  });
  if (text.size() != size) {
    throw std::bad_alloc();
  }
  return text;
}

}  // namespace tests
