// Copyright 2026 The vok_rulecheck authors
// SPDX-License-Identifier: Apache-2.0

// Numbers as printf writes them. Private to the library, not exported. Thread-safe.

#ifndef VOK_RENDERING_NUMBERS_H_
#define VOK_RENDERING_NUMBERS_H_

#include <climits>
#include <cstdint>
#include <limits>
#include <string_view>

namespace vok::numbers {

// Holds any number: sign, digits, decimal point, decimals, and printf's zero byte.
using Buffer = char[1 + std::numeric_limits<double>::max_exponent10 + 1 + MB_LEN_MAX + 6 + 1];

// Formats as "%ld" into the buffer and returns the text: decimal(-5, buffer) is "-5".
// Errors: none.
std::string_view decimal(std::int64_t number, Buffer& buffer);

// Formats as "%f" into the buffer, in the current locale and rounding mode, and returns
// the text: fixed(0.5, buffer) is "0.500000" in the locale "C". Throws std::bad_alloc if
// printf lacks memory, or if the locale's decimal point is longer than MB_LEN_MAX.
std::string_view fixed(double number, Buffer& buffer);

}  // namespace vok::numbers

#endif  // VOK_RENDERING_NUMBERS_H_
