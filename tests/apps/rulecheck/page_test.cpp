// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/page/page.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <vector>

#include "apps/common/directory.h"
#include "support/messages.h"

namespace {

using nlohmann::json;
using rulecheck::PageOptions;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using vok::rulecheck::SessionResult;

namespace fs = std::filesystem;

std::string pageOf(const std::string& result, const PageOptions& options = {}) {
  return rulecheck::page(tests::parse<SessionResult>(result), options);
}

// The page without its head, which has the style and the script.
std::string bodyOf(const std::string& page) {
  const auto begin = page.find("<body>");
  EXPECT_NE(begin, std::string::npos);
  return page.substr(begin);
}

// What the page's script reads, with names for the parts of a finding.
json dataOf(const std::string& page) {
  const std::string tag = "<script type=\"application/json\" id=\"data\">";
  const auto begin = page.rfind(tag) + tag.size();
  json data = json::parse(page.substr(begin, page.find("</script>", begin) - begin));
  for (json& finding : data["findings"]) {
    const json row = finding;
    const json& path = data["files"][row[4].get<std::size_t>()][0];
    finding = {{"kind", data["kinds"][row[0].get<std::size_t>()][1]},
               {"severity", data["kinds"][row[1].get<std::size_t>()][1]},
               {"mark", data["marks"][row[2].get<std::size_t>()][1]},
               {"rule", data["rules"][row[3].get<std::size_t>()][0]},
               {"place", json{path, row[5], row[6]}},
               {"module", data["modules"][row[7].get<std::size_t>()]},
               {"id", row[8]},
               {"link", row[9]},
               {"text", data["texts"][row[10].get<std::size_t>()]},
               {"arguments", row[11]},
               {"facts", json::object()}};
    for (std::size_t i = 12; i + 1 < row.size(); i += 2) {
      const std::string label = data["labels"][row[i].get<std::size_t>()];
      finding["facts"][label] = data["texts"][row[i + 1].get<std::size_t>()];
    }
  }
  return data;
}

std::vector<json> all(const json& data, const char* name) {
  std::vector<json> values;
  for (const json& finding : data["findings"]) {
    values.push_back(finding[name]);
  }
  return values;
}

// A finding of the rule R, in the fields of the text besides.
json findingOf(const std::string& fields, const std::string& rule = "") {
  return dataOf(pageOf("violations { hashmap { key: 1 value { rule_key: 'R' " + fields +
                       " } } } specs_violated { hashmap { key: 'R' value { " + rule +
                       " } } }"))["findings"][0];
}

std::string placeArgument(const std::string& name, int line) {
  return "arg { ref { type: FILE name: '" + name + ":" + std::to_string(line) +
         ":5' url { scheme: FILE path: '/src/" + name + "' fragment: 'L" + std::to_string(line) +
         "C5' } value { string_val: 'line " + std::to_string(line) + "' } } } ";
}

std::string violation(int key, const std::string& file, int line, const std::string& text = "t") {
  return "hashmap { key: " + std::to_string(key) + " value { id: " + std::to_string(key) +
         " severity: SEV_ERROR rule_key: 'R' details { text: '" + text + "' args { " +
         placeArgument(file, line) + " } } } } ";
}

TEST(PageData, IsSortedByPlaceAndThenByNumber) {
  const json data =
      dataOf(pageOf("violations { " + violation(1, "b.v", 2) + violation(2, "a.v", 10) +
                    violation(3, "a.v", 9) + violation(5, "a.v", 9, "x") +
                    violation(4, "a.v", 9, "x") + "hashmap { key: 9 value { id: 9 } } }"));
  EXPECT_THAT(all(data, "id"), ElementsAre(9, 3, 4, 5, 2, 1));
  EXPECT_EQ(data["findings"][1]["place"], json({"a.v", 9, 5}));
}

TEST(PageData, TellsKindsOfFindingsApart) {
  const json data = dataOf(pageOf(R"(
    violations { hashmap { key: 1 value { id: 1 severity: SEV_FATAL } }
                 hashmap { key: 2 value { id: 2 } } }
    waived_violations {
      hashmap { key: 3 value { id: 3 severity: SEV_ERROR categories { key: 1 value: "ok" } } }
      hashmap { key: 4 value { id: 4 categories { key: 1 value: "switched off in the source" } } }
      hashmap { key: 5 value { id: 5
        categories { key: 1 value: "switched off on the command line" } } }
      hashmap { key: 6 value { id: 6 categories { key: 1 value: "cut short by an error" } } } }
    affirmations { hashmap { key: 7 value { id: 7 } } })"));
  EXPECT_THAT(all(data, "kind"), ElementsAre("fatal", "unknown", "not-checked", "not-checked",
                                             "not-checked", "waived", "met"));
  EXPECT_EQ(data["findings"][5]["severity"], "error");
  EXPECT_EQ(data["findings"][5]["facts"], json({{"Reason", "ok"}}));
}

// The result of a test before, and what it has become.
constexpr char kMoved[] = "moved";
TEST(PageData, MarksWhatIsNewMovedUnchangedAndFixed) {
  const auto before = tests::parse<SessionResult>("violations { " + violation(1, "a.v", 1, "same") +
                                                  violation(2, "b.v", 1, "gone") +
                                                  violation(3, "c.v", 1, kMoved) + "}");
  PageOptions options;
  options.baseline = &before;
  std::string moved = violation(3, "c.v", 8, kMoved);
  moved.replace(moved.find("'line 8'"), 8, "'line 1'");
  const json data =
      dataOf(pageOf("violations { " + violation(1, "a.v", 1, "same") + moved +
                        violation(4, "d.v", 1, "more") + "} waived_violations { hashmap { } }",
                    options));
  EXPECT_THAT(all(data, "id"), ElementsAre(0, 1, 2, 3, 4));
  EXPECT_THAT(all(data, "kind"), ElementsAre("waived", "error", "fixed", "error", "error"));
  EXPECT_THAT(all(data, "mark"), ElementsAre("", "unchanged", "", "moved", "new"));
}

TEST(PageData, DoesNotCallFixedWhatIsNotCheckedAnyMore) {
  const auto before = tests::parse<SessionResult>("violations { " + violation(1, "a.v", 1) + "}");
  PageOptions options;
  options.baseline = &before;
  const std::string page = pageOf(R"(waived_violations { hashmap { key: 1 value { rule_key: "R"
    categories { key: 1 value: "cut short by an error" } } } })",
                                  options);
  EXPECT_THAT(all(dataOf(page), "kind"), ElementsAre("not-checked"));
  EXPECT_THAT(page, HasSubstr("; 1 finding of the baseline not checked any more"));
}

TEST(PageData, GivesEachFindingALinkThatLasts) {
  const json data = dataOf(pageOf("violations { " + violation(1, "a.v", 1) +
                                  violation(2, "a.v", 2, "x") + violation(3, "a.v", 2, "x") + "}"));
  const auto links = all(data, "link");
  EXPECT_THAT(links[0].get<std::string>(), testing::MatchesRegex("[0-9a-f]{16}"));
  EXPECT_EQ(links[2], links[1].get<std::string>() + "-2");
  EXPECT_EQ(links[0],
            dataOf(pageOf("violations { " + violation(7, "a.v", 1) + "}"))["findings"][0]["link"]);
}

struct MessageCase {
  const char* name;
  const char* details;
  const char* text;  // with @ for each place of an argument
  std::vector<std::string> arguments;
  const char* others;
};

void PrintTo(const MessageCase& tested, std::ostream* out) {
  *out << tested.details;
}

class PageMessage : public testing::TestWithParam<MessageCase> {};

TEST_P(PageMessage, HasNoPlaceAndTheArgumentsApart) {
  const std::string details = GetParam().details;
  const json finding = findingOf("details { " + details + " }");
  std::string text = finding["text"];
  std::replace(text.begin(), text.end(), '\x01', '@');
  EXPECT_EQ(text, GetParam().text);
  EXPECT_EQ(finding["arguments"], json(GetParam().arguments));
  EXPECT_EQ(finding["facts"].value("Arguments", ""), GetParam().others);
}

#define PLACE "arg { ref { type: FILE name: 'a.v:1' url { scheme: FILE path: '/a.v' } } } "
INSTANTIATE_TEST_SUITE_P(
    Table, PageMessage,
    testing::Values(
        MessageCase{"place_first",
                    "text: '%1: %2 is bad' args { " PLACE "arg { string_val: 'x' } }",
                    "@ is bad",
                    {"x"},
                    ""},
        MessageCase{"place_later",
                    "text: 'in %1' args { " PLACE "}",
                    "in @",
                    {"<a href=\"file:///a.v\">a.v:1</a>"},
                    ""},
        MessageCase{"place_without_mark", "text: 'bad' args { " PLACE "}", "bad", {}, ""},
        MessageCase{"others",
                    "text: '%2' args { arg { string_val: '<a>' } arg { string_val: 'b' } "
                    "arg { string_val: 'c' } }",
                    "@",
                    {"b"},
                    "&lt;a&gt;, c"},
        MessageCase{"arguments_alone",
                    "args { " PLACE "arg { string_val: 'a' } arg { string_val: 'b' } }",
                    "a, b",
                    {},
                    ""},
        MessageCase{"nothing", "", "", {}, ""}),
    [](const auto& tested) { return tested.param.name; });

struct PlaceCase {
  const char* name;
  const char* argument;
  json place;
  const char* module;
};

void PrintTo(const PlaceCase& tested, std::ostream* out) {
  *out << tested.argument;
}

class PagePlace : public testing::TestWithParam<PlaceCase> {};

TEST_P(PagePlace, IsThatOfTheFileOrOfTheFirstObjectInOne) {
  const json finding = findingOf(std::string("details { args { ") + GetParam().argument + " } }");
  EXPECT_EQ(finding["place"], GetParam().place);
  EXPECT_EQ(finding["module"], GetParam().module);
}

INSTANTIATE_TEST_SUITE_P(
    Table, PagePlace,
    testing::Values(
        PlaceCase{"nowhere", "", {"", 0, 0}, ""}, PlaceCase{"file", PLACE, {"a.v", 1, 0}, ""},
        PlaceCase{"object",
                  "arg { ref { type: PORT name: 'p:3' url { scheme: FILE path: '/b.v' "
                  "fragment: 'L7C2' } } }",
                  {"/b.v", 7, 2},
                  ""},
        PlaceCase{"object_on_the_web",
                  "arg { ref { type: PORT name: 'p' url { scheme: HTTP host: 'h' } } }",
                  {"", 0, 0},
                  ""},
        PlaceCase{"file_before_object",
                  "arg { ref { type: PORT name: 'p' url { scheme: FILE path: '/b.v' } } } " PLACE,
                  {"a.v", 1, 0},
                  ""},
        PlaceCase{"level", "arg { ref { type: HIERARCHY name: 'top.u' } }", {"", 0, 0}, "top.u"},
        PlaceCase{"level_in_a_list",
                  "arg { refs { ref { type: PORT name: 'p' } ref { type: HIERARCHY name: 'm' } } }",
                  {"", 0, 0},
                  "m"}),
    [](const auto& tested) { return tested.param.name; });

TEST(PageData, HasTheValuesOfAFindingThatItsRuleLacks) {
  const std::string shared = R"(expects: "e" threshold_value { int_val: 1 }
    categories { key: 2 value: "c" } categories { key: 3 value: "<d>" }
    examples { uri { link_text: "x" url { scheme: HTTP host: "h" } } })";
  const std::string fields = R"(resolution { text: "r" } build_target: "<b>"
    actual_value { double_val: 1.5 units: "ns" } )" +
                             shared;
  EXPECT_EQ(findingOf(fields, "resolution_msg: 'r' " + shared)["facts"],
            json({{"Actual", "1.500000 ns"}, {"Build target", "&lt;b&gt;"}}));
  EXPECT_EQ(findingOf(fields, R"(resolution_msg: "R" expects: "E" threshold_value { int_val: 2 }
                       categories { key: 2 value: "c" } categories { key: 3 value: "D" })")
                ["facts"],
            json({{"Actual", "1.500000 ns"},
                  {"Build target", "&lt;b&gt;"},
                  {"Resolution", "r"},
                  {"Expects", "e"},
                  {"Threshold", "1"},
                  {"Categories", "<span class=\"tag\">3: &lt;d&gt;</span> "},
                  {"Examples", "<span class=\"link\"><a href=\"http://h\">x</a></span> "}}));
}

TEST(PageData, HasEachRuleOnceByTheKeyAsItCame) {
  const json data = dataOf(pageOf(R"(
    violations { hashmap { key: 1 value { rule_key: "<\377>" } }
                 hashmap { key: 2 value { rule_key: "<\377>" } }
                 hashmap { key: 3 value { rule_key: "B" } } }
    specs_violated {
      hashmap { key: "<\376>" value { full_name: "wrong" } }
      hashmap { key: "<\377>" value { full_name: "<right>" severity: SEV_CRITICAL_WARNING
        expects: "<e>" disposition: USERDEFINED msg_id: 0 first_release { major: 1 minor: 2 patch: 3 }
        description { scheme: HTTPS host: "h" path: "A" } } } }
    specs_affirmed { hashmap { key: "B" value { full_name: "B" } } })"));
  EXPECT_EQ(data["rules"],
            json::parse(R"x([["<�>", "<right>", ["Expects", "&lt;e&gt;", "Description",
                "<a href=\"https://h/A\">https://h/A</a>"],
              ["Severity", "critical warning", "Message number", "0", "State", "userdefined",
               "First release", "1.2.3"]],
              ["B", "", [], []]])x"));
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
        Case{"rules_in_three_states",
             R"(violations { hashmap { key: 1 value { rule_key: "A" } } }
                waived_violations { hashmap { key: 1 value { rule_key: "B"
                  categories { key: 1 value: "cut short by an error" } } } }
                affirmations { hashmap { key: 1 value { rule_key: "C" } }
                               hashmap { key: 2 value { rule_key: "D" } } })",
             "<span class=\"verdict\">1 violation</span> <span class=\"detail\">4 findings in "
             "all; 1 rule violated, 2 met, 1 not fully checked",
             "summary clean"},
        Case{"of_violations_wrong", "violation_count: 5", "violation_count says 5, but it lists 0.",
             "summary clean"},
        Case{"plain_row",
             R"(violations { hashmap { key: 1 value { rule_key: "<A>" severity: SEV_ERROR
                  details { text: "%1 <b>" args { arg { string_val: "<x>" } } } } } }
                specs_violated { hashmap { key: "<A>" value { full_name: "Name" expects: "E" } } })",
             "<code class=\"key\">&lt;A&gt;</code> <span class=\"name\">Name</span></h2>\n<dl "
             "class=\"facts about\">\n<div class=\"fact\"><dt>Expects</dt><dd>E</dd></div>\n</dl>\n"
             "<ul>\n<li class=\"finding\"><div class=\"row\"><span class=\"level "
             "error\">error</span>"
             " <span class=\"place\"></span> <span class=\"message\"><code "
             "class=\"arg\">&lt;x&gt;</code> &lt;b&gt;</span></div></li>\n",
             "<x>"}),
    [](const auto& tested) { return tested.param.name; });

TEST(Page, NeedsItsScriptForMoreThanFiveThousandFindings) {
  SessionResult result;
  for (int number = 0; number < 5000; ++number) {
    (*result.mutable_violations()->mutable_hashmap())[number];
  }
  EXPECT_THAT(bodyOf(rulecheck::page(result)), HasSubstr("<li class=\"finding\">"));
  (*result.mutable_violations()->mutable_hashmap())[5000];
  const std::string body = bodyOf(rulecheck::page(result));
  EXPECT_THAT(body, Not(HasSubstr("<li class=\"finding\">")));
  EXPECT_THAT(body, HasSubstr("needs its script"));
  EXPECT_THAT(body, HasSubstr(">5,001 violations</span>"));
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

// Two addresses that browsers read as one, and a violation that is fixed in two places.
TEST(Page, DependsOnNothingButTheResultWhereFindingsAreAlike) {
  std::set<std::string> pages;
  for (int i = 0; i < 20; ++i) {
    const auto result = tests::parse<SessionResult>(R"(violations {
      hashmap { key: 1 value { id: 1 rule_key: "A" details { args { arg { ref { type: FILE name: "a.v"
        url { scheme: FILE path: "/a b" } } } } } } }
      hashmap { key: 2 value { id: 1 rule_key: "B" details { args { arg { ref { type: FILE name: "a.v"
        url { scheme: FILE path: "/a%20b" } } } } } } } })");
    const SessionResult now;
    PageOptions options;
    options.baseline = &result;
    pages.insert(rulecheck::page(result) + rulecheck::page(now, options));
  }
  EXPECT_EQ(pages.size(), 1);
}

TEST(PageLinks, LeadToWebHostsAndEditorsOnly) {
  for (const char* good :
       {"https://host/blob/main/{path}#L{line}", "http://h:1/{path}", "vscode://file{absolute}",
        "idea://open?file={absolute}&line={line}", "subl://open?url={absolute}"}) {
    EXPECT_TRUE(rulecheck::isLinkTemplate(good)) << good;
  }
  for (const char* bad : {"", "{path}", "javascript:alert(1)", "javascript://h/%0aalert(1)",
                          " https://h/", "https://{path}/", "https://h{path}/", "data:text/html,x",
                          "file:///{path}", "HTTPS://h/ x", "vscode:x", "https://h"}) {
    EXPECT_FALSE(rulecheck::isLinkTemplate(bad)) << bad;
  }
}

// A folder of sources, and what a page shows of a file in it.
class PageSources : public testing::Test {
 protected:
  PageSources() { fs::create_directories(folder_ / "root/rtl/.hidden"); }

  void write(const fs::path& name, const std::string& text) const {
    std::ofstream(folder_ / name) << text;
  }

  json shown(const std::string& violations) const {
    PageOptions options;
    options.sourceRoot = folder_ / "root";
    return dataOf(pageOf("violations { " + violations + " }", options));
  }

  const tests::Directory directory_;
  const fs::path folder_ = directory_.path();
};

std::string at(const std::string& file, int line, const std::string& source = "") {
  return "hashmap { key: " + std::to_string(line) +
         " value { details { args { arg { ref { type: FILE name: '" + file +
         "' url { scheme: FILE path: '/x' fragment: 'L" + std::to_string(line) +
         "' } value { string_val: '" + source + "' } } } } } } } ";
}

TEST_F(PageSources, AreTwoLinesAroundEachPlaceOnce) {
  write("root/rtl/a.v", "1\n2\n3\n4\n5\n6\n7\n8\n9\n10\n11\n12\n\x01<\xff\n");
  const json data = shown(at("rtl/a.v", 1) + at("rtl/a.v", 4) + at("rtl/a.v", 12));
  EXPECT_EQ(data["sources"][1], json::parse(R"([[1, "1", "2", "3", "4", "5", "6"],
                                               [10, "10", "11", "12", "�<�"]])"));
  EXPECT_EQ(data["findings"][0]["facts"], json::object());
}

TEST_F(PageSources, AreThoseOfTheResultWhereTheFileIsMissingOrHasChanged) {
  write("root/rtl/a.v", "  wire\ta;\nwire b;\n");
  const json data = shown(at("rtl/a.v", 1, "wire a;") + at("rtl/a.v", 2, "wire <old>;") +
                          at("rtl/a.v", 3, "end") + at("rtl/missing.v", 4, "gone"));
  EXPECT_EQ(data["sources"][1], json::parse(R"([[1, "  wire\ta;", "wire b;"]])"));
  std::vector<std::string> own;
  for (const json& finding : data["findings"]) {
    own.push_back(finding["facts"].value("Source", ""));
  }
  EXPECT_THAT(own, ElementsAre("", "wire &lt;old&gt;;", "end", "gone"));
}

TEST_F(PageSources, AreNotReadOutsideOfTheFolder) {
  write("secret", "secret\n");
  write("root/rtl/.hidden/a.v", "secret\n");
  write("root/.env", "secret\n");
  fs::create_symlink("../../secret", folder_ / "root/rtl/link.v");
  fs::create_directory_symlink("../..", folder_ / "root/rtl/up");
  fs::create_symlink(".hidden/a.v", folder_ / "root/rtl/b.v");
  write("root/rtl/large.v", "secret\n" + std::string(4 << 20, 'x'));
  fs::create_directories(folder_ / "root-2");
  write("root-2/a.v", "secret\n");
  for (const std::string& name :
       {std::string("../secret"), std::string("rtl/../../secret"), (folder_ / "secret").string(),
        (folder_ / "root-2/a.v").string(), std::string("../root-2/a.v"), std::string("rtl/link.v"),
        std::string("rtl/up/secret"), std::string("rtl/.hidden/a.v"), std::string("rtl/b.v"),
        std::string(".env"), std::string("rtl/large.v"), std::string("rtl"),
        std::string("/dev/zero"), std::string(5000, 'x')}) {
    EXPECT_EQ(shown(at(name, 1))["sources"][1], json::array()) << name;
  }
  write("root/rtl/good.v", "good\n");
  fs::create_symlink("rtl/good.v", folder_ / "root/inside.v");
  for (const std::string& name : {std::string("rtl/../rtl/good.v"), std::string("inside.v"),
                                  (folder_ / "root/rtl/good.v").string()}) {
    EXPECT_EQ(shown(at(name, 1))["sources"][1], json::parse(R"([[1, "good"]])")) << name;
  }
}

TEST_F(PageSources, AreShortened) {
  write("root/rtl/a.v", std::string(1000, 'x'));
  EXPECT_EQ(shown(at("rtl/a.v", 1))["sources"][1][0][1], std::string(400, 'x') + " ...");
}

}  // namespace
