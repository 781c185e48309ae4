// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/page/safe_text.h"

#include <gtest/gtest.h>

namespace {

using rulecheck::cleanText;
using rulecheck::escapeText;
using rulecheck::isBlank;
using namespace std::string_literals;

struct Case {
  const char* name;
  std::string text;
  std::string html;
};

void PrintTo(const Case& tested, std::ostream* out) {
  *out << testing::PrintToString(tested.text);
}

class EscapeText : public testing::TestWithParam<Case> {};

TEST_P(EscapeText, MakesHtmlThatShowsTheText) {
  EXPECT_EQ(escapeText(GetParam().text), GetParam().html);
  EXPECT_EQ(escapeText(cleanText(GetParam().text)), GetParam().html);
}

TEST(CleanText, LeavesMarkupAlone) {
  EXPECT_EQ(cleanText("<a href=\"x\">&\x01\r</a>"), "<a href=\"x\">&\xEF\xBF\xBD</a>");
}

const std::string bad = "\xEF\xBF\xBD";

INSTANTIATE_TEST_SUITE_P(
    Table, EscapeText,
    testing::Values(Case{"nothing", "", ""},
                    Case{"plain_text_stays", "Latch in top.v: q[3]", "Latch in top.v: q[3]"},
                    Case{"markup", "<b class=\"x\">", "&lt;b class=&quot;x&quot;&gt;"},
                    Case{"single_quote", "8'hff", "8&#39;hff"},
                    Case{"a_character_reference_is_text", "&lt;&#60;", "&amp;lt;&amp;#60;"},
                    Case{"tab_and_line_feed_stay", "a\tb\nc", "a\tb\nc"},
                    Case{"carriage_returns_go", "a\r\nb\r", "a\nb"},
                    Case{"zero_byte", "a\0b"s, "a" + bad + "b"},
                    Case{"controls", "\x01\x0b\x1f\x7f", bad + bad + bad + bad},
                    Case{"controls_of_two_bytes", "\xC2\x80\xC2\x9F", bad + bad},
                    Case{"smallest_printable_of_two_bytes", "\xC2\xA0", "\xC2\xA0"},
                    Case{"two_three_and_four_bytes_stay", "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80",
                         "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"},
                    Case{"largest_code_point_but_two", "\xF4\x8F\xBF\xBD", "\xF4\x8F\xBF\xBD"},
                    Case{"noncharacters", "\xEF\xBF\xBF\xEF\xB7\x90\xF0\x9F\xBF\xBE",
                         bad + bad + bad},
                    Case{"bidirectional_controls",
                         "\xE2\x80\xAA\xE2\x80\xAE\xE2\x81\xA6\xE2\x81\xA9", bad + bad + bad + bad},
                    Case{"a_replacement_character_stays", bad, bad},
                    Case{"beyond_the_last_code_point", "\xF4\x90\x80\x80", bad + bad + bad + bad},
                    Case{"overlong_less_than", "\xC0\xBC", bad + bad},
                    Case{"overlong_of_three_bytes", "\xE0\x80\xBC", bad + bad + bad},
                    Case{"surrogate", "\xED\xA0\x80", bad + bad + bad},
                    Case{"continuation_alone", "\x80", bad},
                    Case{"byte_that_utf8_never_has", "\xFF", bad},
                    Case{"cut_short_by_the_end", "a\xE2\x82", "a" + bad + bad},
                    Case{"cut_short_by_markup", "\xE2\x82<", bad + bad + "&lt;"}),
    [](const auto& tested) { return tested.param.name; });

TEST(IsBlank, HoldsForNothingButWhiteSpace) {
  EXPECT_TRUE(isBlank(""));
  EXPECT_TRUE(isBlank(" \t\r\n"));
  EXPECT_FALSE(isBlank(" x "));
  EXPECT_FALSE(isBlank("\0"s));
}

}  // namespace
