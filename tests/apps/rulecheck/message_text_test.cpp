// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/page/message_text.h"

#include <gtest/gtest.h>

#include <regex>

#include "support/messages.h"

namespace {

using rulecheck::messageHtml;
using vok::rulecheck::MsgInst;

// The arguments are the strings a, b and so on, as many as are asked for, and
// appear as [a], [b]...
struct Case {
  const char* name;
  const char* text;
  int arguments;
  const char* shown;
};

void PrintTo(const Case& tested, std::ostream* out) {
  *out << tested.text;
}

std::string shown(const MsgInst& message) {
  std::string html = messageHtml(message);
  html = std::regex_replace(html, std::regex("<code class=\"arg\">"), "[");
  html = std::regex_replace(html, std::regex("</code>"), "]");
  return std::regex_replace(html, std::regex("</?span[^>]*>"), "");
}

class MessageText : public testing::TestWithParam<Case> {};

TEST_P(MessageText, HasItsArgumentsInPlace) {
  MsgInst message;
  message.set_text(GetParam().text);
  for (int i = 0; i < GetParam().arguments; ++i) {
    message.mutable_args()->add_arg()->set_string_val(std::string(1, static_cast<char>('a' + i)));
  }
  EXPECT_EQ(shown(message), GetParam().shown);
}

INSTANTIATE_TEST_SUITE_P(
    Table, MessageText,
    testing::Values(
        Case{"no_places", "text", 0, "text"}, Case{"one_place", "%1 is read", 1, "[a] is read"},
        Case{"any_order", "%2, %1.", 2, "[b], [a]."},
        Case{"one_argument_in_two_places", "%1 %1", 1, "[a] [a]"},
        Case{"two_digits", "%12 %1", 12,
             "[l] [a] ([b], [c], [d], [e], [f], [g], [h], [i], [j], [k])"},
        Case{"all_digits_count", "%12", 2, "%12 ([a], [b])"},
        Case{"percent_sign", "100%%", 0, "100%"},
        Case{"percent_sign_before_a_number", "%%1 %1", 1, "%1 [a]"},
        Case{"percent_sign_after_a_place", "%1%%", 1, "[a]%"},
        Case{"percent_at_the_end", "50%", 0, "50%"},
        Case{"percent_before_a_letter", "%d", 1, "%d ([a])"},
        Case{"no_argument_with_that_number", "%3", 2, "%3 ([a], [b])"},
        Case{"number_zero", "%0", 1, "%0 ([a])"}, Case{"leading_zero", "%01", 1, "%01 ([a])"},
        Case{"sign", "%-1 %+1", 1, "%-1 %+1 ([a])"},
        Case{"enormous_number", "%99999999999999999999999", 1, "%99999999999999999999999 ([a])"},
        Case{"arguments_without_a_place", "text", 2, "text ([a], [b])"},
        Case{"too_many_places", "%1%1%1%1%1%1%1%1%1%2", 2, "[a][a][a][a][a][a][a][a]%1[b]"},
        Case{"no_text", "", 1, " ([a])"}),
    [](const auto& tested) { return tested.param.name; });

TEST(MessageText, DoesNotSearchArgumentsForPlaces) {
  const auto message = tests::parse<MsgInst>(
      R"(text: "%1 %2" args { arg { string_val: "%2 %%" } arg { string_val: "%1" } })");
  EXPECT_EQ(shown(message), "[%2 %%] [%1]");
}

TEST(MessageText, ShowsAnEmptyArgument) {
  const auto message = tests::parse<MsgInst>(R"(text: "<%1>" args { arg { } })");
  EXPECT_EQ(shown(message), "&lt;[(empty)]&gt;");
}

TEST(MessageText, StopsFillingPlacesWhenTheArgumentsGetTooLong) {
  MsgInst message;
  message.set_text("%1 %1 %1 %1 ");
  message.mutable_args()->add_arg()->set_string_val(std::string(1u << 20, 'x'));
  const std::string html = messageHtml(message);
  EXPECT_LT(html.size(), 3u << 20);
  EXPECT_NE(html.find(" %1 %1 "), std::string::npos);
}

}  // namespace
