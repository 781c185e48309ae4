#include "html_report/html_report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <regex>

#include "hostile_results.h"
#include "string_fields.h"
#include "support/messages.h"

namespace {

using testing::HasSubstr;
using testing::Not;
using tests::FieldPath;
using vok::rulecheck::Resource;
using vok::rulecheck::SessionResult;

std::string pageOf(const std::string& result) {
  return html_report::page(tests::parse<SessionResult>(result));
}

// The page without its head, which has the style and the script.
std::string bodyOf(const std::string& page) {
  const auto begin = page.find("<body>");
  EXPECT_NE(begin, std::string::npos);
  return page.substr(begin);
}

// How often the characters occur that markup consists of.
struct Markup {
  long lessThan, greaterThan, quotes;
  bool operator==(const Markup& other) const {
    return lessThan == other.lessThan && greaterThan == other.greaterThan && quotes == other.quotes;
  }
};

std::ostream& operator<<(std::ostream& out, const Markup& markup) {
  return out << markup.lessThan << " <, " << markup.greaterThan << " >, " << markup.quotes << " \"";
}

Markup markupOf(const std::string& page) {
  const auto count = [&page](char character) {
    return std::count(page.begin(), page.end(), character);
  };
  return {count('<'), count('>'), count('"')};
}

std::vector<FieldPath> allStringFields() {
  return tests::stringFields(SessionResult::descriptor());
}

Resource harmless() {
  return tests::parse<Resource>(R"(scheme: HTTP host: "h.example")");
}

// Markup is the same as with a plain word in the same places: no text adds any.
TEST(Page, TakesNoTextForMarkup) {
  const Markup plain = markupOf(html_report::page(tests::resultWithEverywhere("word", harmless())));
  for (const tests::HostileText& hostile : tests::hostileTexts()) {
    if (hostile.name != "blank") {  // which is left out, tags and all
      const SessionResult result = tests::resultWithEverywhere(hostile.text, harmless());
      EXPECT_EQ(markupOf(html_report::page(result)), plain) << hostile.name;
    }
  }
}

TEST(Page, TakesNoFieldForMarkup) {
  for (const FieldPath& path : allStringFields()) {
    const auto page = [&path](const std::string& text) {
      return html_report::page(tests::resultWithOnly(path, text, harmless()));
    };
    EXPECT_EQ(markupOf(page("<script>\"'")), markupOf(page("word"))) << tests::nameOf(path);
  }
}

// Texts of the page cannot hold a double quote, so each of these is an attribute.
std::size_t count(const std::string& page, const std::string& what) {
  std::size_t number = 0;
  for (auto at = page.find(what); at != std::string::npos; at = page.find(what, at + 1)) {
    ++number;
  }
  return number;
}

TEST(Page, LinksToNothingButWebFileAndMail) {
  for (const tests::HostileCase& hostile : tests::hostileCases()) {
    const std::string page =
        html_report::page(tests::resultWithEverywhere(hostile.text, hostile.rest));
    std::size_t allowed = 0;
    for (const char* begin : {"http://", "https://", "file://", "mailto:", "#", "data:,\""}) {
      allowed += count(page, std::string("href=\"") + begin);
    }
    EXPECT_EQ(allowed, count(page, "href=\"")) << hostile.name;
  }
}

// Whether the page shows a field when it is the only one.
bool hasAPlace(const std::string& field) {
  static const std::regex without(
      "docgen_filename"                                // none of the page's business
      "|ref\\.value\\.[a-z_]+|arg\\.scalar\\.units"    // Converter leaves them out
      "|specs_[a-z]+\\.hashmap\\.value\\.key"          // the map's key is shown
      "|(url|_file|description)\\.(encoding|data)"     // they belong to inline data
      "|(ref\\.url|_file|description)\\.media_type");  // and so does this, except as a link's text
  std::smatch match;
  return !std::regex_search(field, match, without) || !match.suffix().str().empty();
}

TEST(Page, ShowsEveryText) {
  int places = 0;
  for (const FieldPath& path : allStringFields()) {
    const std::string name = tests::nameOf(path);
    const std::string page = html_report::page(tests::resultWithOnly(path, "needle", harmless()));
    EXPECT_EQ(bodyOf(page).find("needle") != std::string::npos, hasAPlace(name)) << name;
    places += hasAPlace(name) ? 1 : 0;
  }
  EXPECT_GT(places, 250);
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
    Summary, PageWords,
    testing::Values(
        Case{"no_result_at_all", "", "<h1>Unnamed session</h1>", "class=\"facts session\""},
        Case{"blank_name", R"(session { name: " " })", "<h1>Unnamed session</h1>", ""},
        Case{"no_description", R"(session { name: "s" })", "<h1>s</h1>", "class=\"description\""},
        Case{"time", "session { timestamp: 1773500966000 }",
             "<time datetime=\"2026-03-14T15:09:26Z\">2026-03-14 15:09:26 UTC</time>", ""},
        Case{"time_zero", "session { timestamp: 0 }", "1970-01-01 00:00:00 UTC", ""},
        Case{"no_time", R"(session { name: "s" })", "<h1>s</h1>", "Run at"},
        Case{"time_out_of_range", "session { timestamp: 9223372036854775807 }",
             "timestamp 9223372036854775807", "UTC"},
        Case{"report_file", R"(session { report_file { scheme: FILE path: "/r" } })",
             "<a href=\"file:///r\">file:///r</a>", ""},
        Case{"report_file_elsewhere", R"(session { report_file { scheme: FTP host: "h" } })",
             "<dd>ftp://h</dd>", "href=\"h"},
        Case{"clean", "", "<section class=\"summary clean\"", "class=\"problems\""},
        Case{"one_violation", "violations { hashmap { key: 1 value { } } }",
             "<span class=\"verdict\">1 violation</span> <span class=\"detail\">of 1 rule, 0 "
             "waived, 0 affirmed",
             "summary clean"},
        Case{"two_violations",
             "violations { hashmap { key: 1 value { } } hashmap { key: 2 value { } } }",
             "<span class=\"verdict\">2 violations</span> <span class=\"detail\">of 1 rule,", ""},
        Case{"counts_of_severities",
             "violations { hashmap { key: 1 value { severity: SEV_WARNING } } }",
             "<li class=\"tile warning\"><b>1</b> <span>warning</span></li>", "tile unknown"},
        Case{"count_of_unknown_severities", "violations { hashmap { key: 1 value { } } }",
             "<li class=\"tile unknown\"><b>1</b> <span>unknown</span></li>", ""}),
    [](const auto& tested) { return tested.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Counts, PageWords,
    testing::Values(
        Case{"right", "violation_count: 1 violations { hashmap { key: 1 value { } } }",
             "1 violation", "class=\"problems\""},
        Case{"absent", "violations { hashmap { key: 1 value { } } }", "1 violation",
             "class=\"problems\""},
        Case{"zero_and_no_map", "violation_count: 0 waived_count: 0 affirmation_count: 0",
             "summary clean", "class=\"problems\""},
        Case{"of_violations_wrong", "violation_count: 5", "violation_count says 5, but it lists 0.",
             "summary clean"},
        Case{"of_waived_wrong", "waived_count: 1", "waived_count says 1, but it lists 0.", ""},
        Case{"of_affirmations_wrong",
             "affirmations { hashmap { key: 1 value { } } } affirmation_count: 0",
             "affirmation_count says 0, but it lists 1.", ""},
        Case{"below_zero", "violation_count: -1", "violation_count says -1, but it lists 0.", ""}),
    [](const auto& tested) { return tested.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Finding, PageWords,
    testing::Values(
        Case{"values",
             R"(violations { hashmap { key: 1 value {
                  actual_value { double_val: 1.5 units: "ns" } threshold_value { int_val: 1 } } } })",
             "<dt>Actual</dt><dd>1.500000 ns</dd></div><div "
             "class=\"fact\"><dt>Threshold</dt><dd>1</dd>",
             ""},
        Case{"categories_in_order",
             R"(violations { hashmap { key: 1 value {
                  categories { key: 10 value: "b" } categories { key: 9 value: "a" } } } })",
             "<span class=\"tag\">9: a</span> <span class=\"tag\">10: b</span>", ""},
        Case{"number_that_differs_from_its_key",
             "violations { hashmap { key: 1 value { id: 7 } } }",
             "#7</a> <span class=\"absent\">listed as 1</span>", ""},
        Case{"number_equal_to_its_key", "violations { hashmap { key: 7 value { id: 7 } } }",
             "#7</a>", "listed as"},
        Case{"no_number", "violations { hashmap { key: 7 value { } } }", "#7</a>", "listed as"},
        Case{"no_message", "violations { hashmap { key: 7 value { } } }",
             "<p class=\"message absent\">No message.</p>", "<dl class=\"facts\">"},
        Case{"no_severity", "violations { hashmap { key: 7 value { } } }",
             "<span class=\"level unknown\">unknown</span>", "class=\"level advisory\""},
        Case{"affirmed", "affirmations { hashmap { key: 7 value { } } }",
             "<span class=\"level affirmed\">affirmed</span>", ""},
        Case{"no_waived", "", "No violation was waived.", ""},
        Case{"some_waived", "waived_violations { hashmap { key: 7 value { } } }", "id=\"waived-7\"",
             "No violation was waived."}),
    [](const auto& tested) { return tested.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Rule, PageWords,
    testing::Values(Case{"not_specified",
                         R"(violations { hashmap { key: 1 value { rule_key: "A" } } })",
                         "The result has no specification of this rule.", ""},
                    Case{"not_named", "violations { hashmap { key: 1 value { } } }",
                         "<span class=\"key\">No rule named</span>",
                         "The result has no specification of this rule."},
                    Case{"specified",
                         R"(violations { hashmap { key: 1 value { rule_key: "A" } } }
                specs_violated { hashmap { key: "A" value { full_name: "Rule <A>" } } })",
                         "<span class=\"name\">Rule &lt;A&gt;</span>",
                         "The result has no specification"},
                    Case{"without_a_name",
                         R"(violations { hashmap { key: 1 value { rule_key: "A" } } }
                specs_violated { hashmap { key: "A" value { full_name: " " } } })",
                         "<code class=\"key\">A</code></button>", "class=\"name\""},
                    Case{"found_by_the_key_as_it_came",
                         R"(violations { hashmap { key: 1 value { rule_key: "<\377>" } } }
                specs_violated {
                  hashmap { key: "<\376>" value { full_name: "wrong" } }
                  hashmap { key: "<\377>" value { full_name: "right" } } })",
                         "<span class=\"name\">right</span>", "wrong"},
                    Case{"specified_among_the_affirmed",
                         R"(violations { hashmap { key: 1 value { rule_key: "A" } } }
                specs_affirmed { hashmap { key: "A" value { full_name: "found" } } })",
                         "<span class=\"name\">found</span>", ""},
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
                    Case{"described_inline",
                         R"(violations { hashmap { key: 1 value { rule_key: "A" } } }
                specs_violated { hashmap { key: "A" value {
                  description { scheme: DATA media_type: "text/html" data: "<b>why</b>" } } } })",
                         "<dd>&lt;b&gt;why&lt;/b&gt;</dd>", "<b>why"},
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
    EXPECT_THAT(bodyOf(html_report::page(result)), Not(HasSubstr("message long")));
    details->set_text(text + text.back());
    EXPECT_THAT(bodyOf(html_report::page(result)),
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
  EXPECT_EQ(html_report::page(forwards), html_report::page(backwards));
}

}  // namespace
