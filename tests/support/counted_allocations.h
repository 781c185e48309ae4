// What a program allocates by operator new. Linking this replaces it.

#ifndef VOK_TESTS_SUPPORT_COUNTED_ALLOCATIONS_H_
#define VOK_TESTS_SUPPORT_COUNTED_ALLOCATIONS_H_

#include <cstddef>

namespace tests {

// How often, and how many bytes in all, the calling thread has allocated.
std::size_t allocations();
std::size_t allocatedBytes();

}  // namespace tests

#endif  // VOK_TESTS_SUPPORT_COUNTED_ALLOCATIONS_H_
