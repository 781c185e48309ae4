// SPDX-License-Identifier: Apache-2.0

// The characters of a text of unknown origin.

#ifndef VOK_APPS_COMMON_CHARACTERS_H_
#define VOK_APPS_COMMON_CHARACTERS_H_

#include <cstddef>
#include <string>
#include <string_view>

namespace apps {

struct CodePoint {
  char32_t value;
  std::size_t length;  // in bytes
};

// The first code point of the text, which must not be empty. A byte that does not begin a
// well-formed UTF-8 sequence counts as U+FFFD.
CodePoint firstOf(std::string_view text);

// False for control characters, line breaks included, for those that change the direction
// of a text (U+202A to U+202E, U+2066 to U+2069), for noncharacters and for U+FFFD.
bool isHarmless(char32_t value);

// The text on one line of a terminal: line breaks and tabs become one blank, and each other
// character that is not harmless "?".
std::string oneLine(std::string_view text);

}  // namespace apps

#endif  // VOK_APPS_COMMON_CHARACTERS_H_
