// SPDX-License-Identifier: Apache-2.0

#include "common/characters.h"

namespace apps {
namespace {

constexpr char32_t replacement = 0xFFFD;

// The number of bytes that the first byte of a sequence announces; 0 if no
// sequence begins with that byte.
std::size_t announcedLength(unsigned char lead) {
  if (lead < 0x80) {
    return 1;
  }
  return lead < 0xC0 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF8 ? 4 : 0;
}

}  // namespace

CodePoint firstOf(std::string_view text) {
  constexpr char32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
  constexpr CodePoint malformed = {replacement, 1};
  const auto lead = static_cast<unsigned char>(text.front());
  const std::size_t length = announcedLength(lead);
  if (length == 0 || length > text.size()) {
    return malformed;
  }
  char32_t value = length == 1 ? lead : lead & (0x7Fu >> length);
  for (const char byte : text.substr(1, length - 1)) {
    const auto next = static_cast<unsigned char>(byte);
    if ((next & 0xC0) != 0x80) {
      return malformed;
    }
    value = value << 6 | (next & 0x3F);
  }
  const bool surrogate = value >= 0xD800 && value <= 0xDFFF;
  if (value < smallest[length] || value > 0x10FFFF || surrogate) {
    return malformed;
  }
  return {value, length};
}

bool isHarmless(char32_t value) {
  const bool control = value < 0x20 || (value >= 0x7F && value < 0xA0);
  const bool bidirectional =
      (value >= 0x202A && value <= 0x202E) || (value >= 0x2066 && value <= 0x2069);
  const bool noncharacter = (value >= 0xFDD0 && value <= 0xFDEF) || (value & 0xFFFE) == 0xFFFE;
  return !control && !bidirectional && !noncharacter && value != replacement;
}

std::string oneLine(std::string_view text) {
  std::string line;
  while (!text.empty()) {
    const CodePoint first = firstOf(text);
    if (first.value == '\n' || first.value == '\r' || first.value == '\t') {
      line += !line.empty() && line.back() == ' ' ? "" : " ";
    } else {
      line += isHarmless(first.value) ? text.substr(0, first.length) : "?";
    }
    text.remove_prefix(first.length);
  }
  return line;
}

}  // namespace apps
