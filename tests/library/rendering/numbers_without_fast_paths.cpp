// SPDX-License-Identifier: Apache-2.0

// Numbers as a 32-bit target and GCC 10's library get them.

#include <charconv>

#undef __SIZEOF_INT128__
#undef __cpp_lib_to_chars
#include "rendering/numbers.cpp"
