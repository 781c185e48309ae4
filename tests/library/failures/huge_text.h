// SPDX-License-Identifier: Apache-2.0

// Texts that are larger than the machine's memory.

#ifndef VOK_TESTS_LIBRARY_FAILURES_HUGE_TEXT_H_
#define VOK_TESTS_LIBRARY_FAILURES_HUGE_TEXT_H_

#include <cstddef>
#include <string>

namespace tests {

// That many zero bytes, at least 1 GiB of them. They take no memory until they
// are written to. Throws std::bad_alloc if the address space has no room.
std::string hugeText(std::size_t size);

}  // namespace tests

#endif  // VOK_TESTS_LIBRARY_FAILURES_HUGE_TEXT_H_
