// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/page/page.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>

#include "support/messages.h"

namespace {

using testing::HasSubstr;
using testing::Not;
using vok::rulecheck::SessionResult;

std::string pageOf(const std::string& result) {
  return rulecheck::page(tests::parse<SessionResult>(result));
}

// The page without its head, which has the style and the script.
std::string bodyOf(const std::string& page) {
  const auto begin = page.find("<body>");
  EXPECT_NE(begin, std::string::npos);
  return page.substr(begin);
}

// The texts in the order of the page.
std::vector<std::string> found(const std::string& page, const std::string& pattern) {
  const std::string body = bodyOf(page);
  const std::regex regex(pattern);
  std::vector<std::string> texts;
  for (std::sregex_iterator match(body.begin(), body.end(), regex), end; match != end; ++match) {
    texts.push_back((*match)[1]);
  }
  return texts;
}

TEST(Page, PutsTheMostSeriousGroupFirstAndNamesakesTogether) {
  const std::string page = pageOf(R"(
    violations {
      hashmap { key: 1 value { severity: SEV_ADVISORY rule_key: "B" } }
      hashmap { key: 2 value { severity: SEV_ERROR rule_key: "D" } }
      hashmap { key: 3 value { rule_key: "A" } }
      hashmap { key: 4 value { severity: SEV_FATAL rule_key: "B" } }
      hashmap { key: 5 value { severity: SEV_ERROR rule_key: "C" } }
      hashmap { key: 6 value { severity: SEV_FATAL rule_key: "B" } }
      hashmap { key: -7 value { severity: SEV_FATAL rule_key: "B" } }
    })");
  EXPECT_THAT(found(page, "class=\"key\">([^<]*)<"), testing::ElementsAre("B", "C", "D", "A"));
  EXPECT_THAT(found(page, "id=\"violation-([^\"]*)\""),
              testing::ElementsAre("-7", "4", "6", "1", "5", "2", "3"));
}

TEST(Page, KeepsWaivedFindingsApartAndClosed) {
  const std::string page = pageOf(R"(
    violations { hashmap { key: 1 value { severity: SEV_ERROR rule_key: "A" } } }
    waived_violations { hashmap { key: 1 value { severity: SEV_ERROR rule_key: "A" } } }
    affirmations { hashmap { key: 1 value { rule_key: "A" } } })");
  EXPECT_THAT(found(page, "<div class=\"group ([^\"]*)\""),
              testing::ElementsAre("error", "error", "affirmed"));
  EXPECT_THAT(found(page, "aria-expanded=\"([^\"]*)\""),
              testing::ElementsAre("true", "false", "true"));
  EXPECT_THAT(found(page, "<li class=\"finding [a-z-]*\" ([^>]*)>"),
              testing::ElementsAre("id=\"violation-1\" data-kind=\"error\"",
                                   "id=\"waived-1\" data-kind=\"waived\"",
                                   "id=\"affirmation-1\" data-kind=\"affirmed\""));
}

TEST(Page, KeepsApartWhatWasNotChecked) {
  const std::string page = pageOf(R"(
    waived_violations {
      hashmap { key: 1 value { rule_key: "A" categories { key: 1 value: "accepted" } } }
      hashmap { key: 2 value { rule_key: "B"
        categories { key: 1 value: "switched off in the source" } } }
      hashmap { key: 3 value { rule_key: "B"
        categories { key: 1 value: "switched off on the command line" } } }
      hashmap { key: 4 value { rule_key: "C"
        categories { key: 1 value: "cut short by an error" } } } })");
  EXPECT_THAT(found(page, "<li class=\"finding [a-z-]*\" id=\"[a-z]*-([^>]*)>"),
              testing::ElementsAre("2\" data-kind=\"not-checked\"", "3\" data-kind=\"not-checked\"",
                                   "4\" data-kind=\"not-checked\"", "1\" data-kind=\"waived\""));
  EXPECT_THAT(page, HasSubstr("1 waived, 0 affirmed, 2 rules not checked everywhere"));
}

// What a result has to say, in words that the page must have and must not have.
struct Case {
  const char* name;
  const char* result;
  const char* present;
  const char* absent;
};

void PrintTo(const Case& tested, std::ostream* out) {
  *out << tested.result;
}

class PageWords : public testing::TestWithParam<Case> {};

TEST_P(PageWords, SayWhatTheResultHolds) {
  const std::string body = bodyOf(pageOf(GetParam().result));
  EXPECT_THAT(body, HasSubstr(GetParam().present));
  if (*GetParam().absent != '\0') {
    EXPECT_THAT(body, Not(HasSubstr(GetParam().absent)));
  }
}

INSTANTIATE_TEST_SUITE_P(
    Table, PageWords,
    testing::Values(
        Case{"no_result_at_all", "", "<h1>Unnamed session</h1>", "class=\"facts session\""},
        Case{"time", "session { timestamp: 1773500966000 }",
             "<time datetime=\"2026-03-14T15:09:26Z\">2026-03-14 15:09:26 UTC</time>", ""},
        Case{"time_out_of_range", "session { timestamp: 9223372036854775807 }",
             "timestamp 9223372036854775807", "UTC"},
        Case{"report_file_elsewhere", R"(session { report_file { scheme: FTP host: "h" } })",
             "<dd>ftp://h</dd>", "href=\"h"},
        Case{"clean", "", "<section class=\"summary clean\"", "class=\"problems\""},
        Case{"one_violation", "violations { hashmap { key: 1 value { } } }",
             "<span class=\"verdict\">1 violation</span> <span class=\"detail\">of 1 rule, 0 "
             "waived, 0 affirmed",
             "summary clean"},
        Case{"of_violations_wrong", "violation_count: 5", "violation_count says 5, but it lists 0.",
             "summary clean"},
        Case{"values",
             R"(violations { hashmap { key: 1 value {
                  actual_value { double_val: 1.5 units: "ns" } threshold_value { int_val: 1 } } } })",
             "<dt>Actual</dt><dd>1.500000 ns</dd></div><div "
             "class=\"fact\"><dt>Threshold</dt><dd>1</dd>",
             ""},
        Case{"number_that_differs_from_its_key",
             "violations { hashmap { key: 1 value { id: 7 } } }",
             "#7</a> <span class=\"absent\">listed as 1</span>", ""},
        Case{"not_specified", R"(violations { hashmap { key: 1 value { rule_key: "A" } } })",
             "The result has no specification of this rule.", ""},
        Case{"specified",
             R"(violations { hashmap { key: 1 value { rule_key: "A" } } }
                specs_violated { hashmap { key: "A" value { full_name: "Rule <A>" } } })",
             "<span class=\"name\">Rule &lt;A&gt;</span>", "The result has no specification"},
        Case{"found_by_the_key_as_it_came",
             R"(violations { hashmap { key: 1 value { rule_key: "<\377>" } } }
                specs_violated {
                  hashmap { key: "<\376>" value { full_name: "wrong" } }
                  hashmap { key: "<\377>" value { full_name: "right" } } })",
             "<span class=\"name\">right</span>", "wrong"},
        Case{"specified_twice",
             R"(affirmations { hashmap { key: 1 value { rule_key: "A" } } }
                specs_violated { hashmap { key: "A" value { full_name: "violated" } } }
                specs_affirmed { hashmap { key: "A" value { full_name: "affirmed rule" } } })",
             "<span class=\"name\">affirmed rule</span>", ">violated<"},
        Case{"described",
             R"(violations { hashmap { key: 1 value { rule_key: "A" } } }
                specs_violated { hashmap { key: "A" value {
                  description { scheme: HTTPS host: "h" path: "A" } } } })",
             "<a href=\"https://h/A\">Rule description</a>", ""},
        Case{"in_full",
             R"(violations { hashmap { key: 1 value { rule_key: "A" } } }
                specs_violated { hashmap { key: "A" value {
                  severity: SEV_CRITICAL_WARNING disposition: USERDEFINED msg_id: 0
                  first_release { major: 1 minor: 2 patch: 3 } } } })",
             "<dt>Severity</dt><dd>critical warning</dd></div>"
             "<div class=\"fact\"><dt>Message number</dt><dd>0</dd></div>"
             "<div class=\"fact\"><dt>State</dt><dd>userdefined</dd></div>"
             "<div class=\"fact\"><dt>First release</dt><dd>1.2.3</dd></div>",
             ""}),
    [](const auto& tested) { return tested.param.name; });

TEST(Page, GivesAHugeTextAScrollBar) {
  SessionResult result;
  auto* details = (*result.mutable_violations()->mutable_hashmap())[1].mutable_details();
  for (const auto& text : {std::string(2000, 'x'), "x" + std::string(20, '\n')}) {
    details->set_text(text);
    EXPECT_THAT(bodyOf(rulecheck::page(result)), Not(HasSubstr("message long")));
    details->set_text(text + text.back());
    EXPECT_THAT(bodyOf(rulecheck::page(result)),
                HasSubstr("<p class=\"message long\" tabindex=\"0\">x"));
  }
}

// Maps have no order of their own.
TEST(Page, DependsOnNothingButTheResult) {
  SessionResult forwards;
  SessionResult backwards;
  for (int i = 0; i < 100; ++i) {
    (*forwards.mutable_violations()->mutable_hashmap())[i].set_rule_key(std::to_string(i % 7));
    (*backwards.mutable_violations()->mutable_hashmap())[99 - i].set_rule_key(
        std::to_string((99 - i) % 7));
  }
  EXPECT_EQ(rulecheck::page(forwards), rulecheck::page(backwards));
}

}  // namespace
