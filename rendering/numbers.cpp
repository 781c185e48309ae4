// Copyright 2026 The vok_rulecheck authors
// SPDX-License-Identifier: Apache-2.0

#include "numbers.h"

#include <langinfo.h>

#include <cfenv>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <new>

namespace vok::numbers {
namespace {

std::string_view textUntil(const char* end, const Buffer& buffer) {
  return {buffer, static_cast<std::size_t>(end - buffer)};
}

#ifdef __SIZEOF_INT128__  // not on 32-bit targets

constexpr std::uint64_t kMillion = 1000000;

// The millionths of larger numbers may not fit into 64 bits.
constexpr double kMostInMillionths = 1e13;

// Returns a million times the number, which is at least 0 and less than
// kMostInMillionths, rounded to nearest and ties to even. Exact: the significand
// of 53 bits times a million fits into 128 bits.
std::uint64_t millionths(double number) {
  __extension__ using Uint128 = unsigned __int128;
  constexpr int kFractionBits = std::numeric_limits<double>::digits - 1;
  constexpr std::uint64_t kImplicitBit = std::uint64_t{1} << kFractionBits;
  std::uint64_t bits;
  std::memcpy(&bits, &number, sizeof bits);
  // number = significand / 2^shift
  const std::uint64_t shift = 1023 + kFractionBits - (bits >> kFractionBits);
  const std::uint64_t significand = kImplicitBit | (bits & (kImplicitBit - 1));
  if (shift > 74) {
    return 0;  // less than half of a millionth
  }
  const Uint128 product = Uint128{significand} * kMillion;
  const Uint128 half = Uint128{1} << (shift - 1);
  const bool odd = (product >> shift & 1) != 0;
  return static_cast<std::uint64_t>((product + half - (odd ? 0 : 1)) >> shift);
}

std::string_view fixedByMillionths(double number, Buffer& buffer) {
  const std::uint64_t count = millionths(std::fabs(number));
  char* next = buffer;
  if (std::signbit(number)) {
    *next++ = '-';
  }
  char* const point = std::to_chars(next, std::end(buffer), count / kMillion).ptr;
  // Seven digits, the first of which makes room for the decimal point.
  char* const end = std::to_chars(point, std::end(buffer), kMillion + count % kMillion).ptr;
  *point = '.';
  return textUntil(end, buffer);
}

#endif

std::string_view fixedByPrintf(double number, Buffer& buffer) {
  const int length = std::snprintf(buffer, sizeof buffer, "%f", number);
  // Negative if memory is lacking; too large if a malformed locale's decimal point is
  // longer than MB_LEN_MAX and the text was truncated.
  if (static_cast<std::size_t>(length) >= sizeof buffer) {
    throw std::bad_alloc();
  }
  return textUntil(buffer + length, buffer);
}

// The paths that are faster than printf always round to nearest and write a full stop.
bool needsPrintf(double number) {
  return !std::isfinite(number) || std::fegetround() != FE_TONEAREST ||
         std::strcmp(nl_langinfo(RADIXCHAR), ".") != 0;
}

}  // namespace

std::string_view decimal(std::int64_t number, Buffer& buffer) {
  return textUntil(std::to_chars(std::begin(buffer), std::end(buffer), number).ptr, buffer);
}

std::string_view fixed(double number, Buffer& buffer) {
  if (needsPrintf(number)) {
    return fixedByPrintf(number, buffer);
  }
#ifdef __SIZEOF_INT128__
  if (std::fabs(number) < kMostInMillionths) {
    return fixedByMillionths(number, buffer);
  }
#endif
#ifdef __cpp_lib_to_chars
  const auto result =
      std::to_chars(std::begin(buffer), std::end(buffer), number, std::chars_format::fixed, 6);
  return textUntil(result.ptr, buffer);
#else  // GCC 10 has to_chars for integers only
  return fixedByPrintf(number, buffer);
#endif
}

}  // namespace vok::numbers
