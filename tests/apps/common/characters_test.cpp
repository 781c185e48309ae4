// SPDX-License-Identifier: Apache-2.0

// Text of unknown origin on a terminal. The tests of rulecheck's page have the rest.

#include "common/characters.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(Characters, ThatAreHarmlessStayOnOneLine) {
  const struct {
    const char* text;
    const char* line;
  } cases[] = {
      {"", ""},
      {"a.v: \xC3\xA4 \xE2\x82\xAC \xF0\x9F\x98\x80",
       "a.v: \xC3\xA4 \xE2\x82\xAC \xF0\x9F\x98\x80"},
      {"a\nb\r\tc", "a?b??c"},
      {"\x1b[2J\x07\x7f", "?[2J??"},
      {"\xC2\x9B\x9B\xFF", "???"},
      {"\xE2\x80\xA9 \xE2\x80\xAA\xE2\x80\xAE \xE2\x80\xAF", "\xE2\x80\xA9 ?? \xE2\x80\xAF"},
      {"\xE2\x81\xA5 \xE2\x81\xA6\xE2\x81\xA9 \xE2\x81\xAA", "\xE2\x81\xA5 ?? \xE2\x81\xAA"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.line, apps::oneLine(c.text));
  }
}

}  // namespace
