// SPDX-License-Identifier: Apache-2.0

// What each target defines: it takes any bytes, and returns 0.

#ifndef VOK_FUZZ_TARGET_H_
#define VOK_FUZZ_TARGET_H_

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

#endif  // VOK_FUZZ_TARGET_H_
