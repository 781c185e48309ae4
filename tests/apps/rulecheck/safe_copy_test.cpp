// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/page/safe_copy.h"

#include <gtest/gtest.h>
#include <vok/rulecheck/Converter.h>

#include "rulecheck/page/safe_text.h"
#include "support/messages.h"

namespace {

using rulecheck::safeCopy;
using vok::rulecheck::Arg;
using vok::rulecheck::Converter;
using vok::rulecheck::Reference;

struct Case {
  const char* name;
  const char* arg;
  const char* html;
};

void PrintTo(const Case& tested, std::ostream* out) {
  *out << tested.arg;
}

class SafeCopy : public testing::TestWithParam<Case> {};

TEST_P(SafeCopy, RendersAsHarmlessHtml) {
  const auto arg = tests::parse<Arg>(GetParam().arg);
  EXPECT_EQ(Converter::toHtml(safeCopy(arg)), GetParam().html);
}

INSTANTIATE_TEST_SUITE_P(
    Link, SafeCopy,
    testing::Values(
        Case{"keeps_a_good_address",
             R"(uri { link_text: "a<b" url { scheme: HTTP host: "h" query: "a=1&b='2'" } })",
             R"(<a href="http://h?a=1&amp;b=&#39;2&#39;">a&lt;b</a>)"},
        Case{"gets_its_mail_scheme",
             R"(uri { link_text: "owner" url { scheme: MAILTO path: "a@b" } })",
             R"(<a href="mailto:a@b">owner</a>)"},
        Case{"without_text_shows_the_media_type",
             R"(uri { url { scheme: FILE path: "/a" media_type: "text/x" } })",
             R"(<a href="file:///a">text/x</a>)"},
        Case{"without_any_text_says_link",
             R"(uri { link_text: " " url { scheme: FILE path: "/a" media_type: "" } })",
             R"(<a href="file:///a">link</a>)"},
        Case{"to_elsewhere_is_its_text",
             R"(uri { link_text: "here" url { scheme: FTP host: "h" } })", "here"},
        Case{"to_elsewhere_without_text_is_its_address",
             R"(uri { url { scheme: IRC host: "h<" } })", "irc://h&lt;"},
        Case{"without_scheme_keeps_its_text", R"(uri { link_text: "here" url { host: "h" } })",
             "here"},
        Case{"with_a_page_inline_shows_its_source",
             R"(uri { url { scheme: DATA media_type: "text/html" data: "<script>" } })",
             "&lt;script&gt;"},
        Case{
            "with_text_and_a_page_inline_shows_both",
            R"(uri { link_text: "page" url { scheme: DATA media_type: "text/html" data: "<script>" } })",
            "page (&lt;script&gt;)"},
        Case{"with_an_image_inline_is_its_text",
             R"(uri { link_text: "wave" url { scheme: DATA media_type: "image/png" data: "x" } })",
             "wave"},
        Case{"of_nothing", "uri { }", "empty link"},
        Case{"of_a_blank_text", R"(uri { link_text: "\n" })", "empty link"},
        Case{"of_a_text_alone", R"(uri { link_text: "<empty>" })", "&lt;empty&gt;"}),
    [](const auto& tested) { return tested.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Reference, SafeCopy,
    testing::Values(
        Case{"keeps_a_good_address",
             R"(ref { type: PORT name: "a" url { scheme: FILE path: "/t v" } })",
             R"(<a href="file:///t%20v">a</a>)"},
        Case{"to_elsewhere_is_its_name",
             R"(ref { type: PORT name: "<a>" url { scheme: FTP host: "h" } })", "&lt;a&gt;"},
        Case{"without_name_keeps_kind_and_number",
             R"(ref { type: PORT name: "" id: 4 url { host: 'javascript:alert(1)' } })", "port #4"},
        Case{"with_a_page_inline_shows_name_and_source",
             R"(ref { type: LOOP id: 1 url { scheme: DATA media_type: "text/html" data: "<i>" } })",
             "loop #1 (&lt;i&gt;)"},
        Case{"by_identifier", R"(ref { type: LOOP uuid: "<u>" })", "loop &lt;u&gt;"}),
    [](const auto& tested) { return tested.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Lists, SafeCopy,
    testing::Values(
        Case{"of_references",
             R"(refs { ref { type: PORT name: "<" } ref { type: PORT name: ">" } })", "&lt;,&gt;"},
        Case{"of_links", R"(uris { uri { link_text: "<" } uri { } })", "&lt;,empty link"},
        Case{"text", R"-(string_val: "\"'&")-", "&quot;&#39;&amp;"},
        Case{"scalar", R"(scalar { string_val: "<" })", "&lt;"}, Case{"nothing", "", ""}),
    [](const auto& tested) { return tested.param.name; });

#ifdef NDEBUG  // generated code asserts that numbers are listed
TEST(SafeCopy, NamesNoUnlistedKind) {
  Reference reference;
  reference.set_type(static_cast<Reference::RefType>(29));
  reference.set_id(3);
  EXPECT_EQ(Converter::toHtml(safeCopy(reference)), "other #3");
}
#endif

}  // namespace
