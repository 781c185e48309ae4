// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/page/safe_link.h"

#include <gtest/gtest.h>
#include <vok/rulecheck/Converter.h>

#include "support/messages.h"

namespace {

using vok::rulecheck::Converter;
using vok::rulecheck::Resource;

// What a page makes of a resource: the address that it links to, "" if it does
// not, and the resource in words.
struct Case {
  const char* name;
  const char* resource;
  const char* address;
  const char* words;
};

void PrintTo(const Case& tested, std::ostream* out) {
  *out << tested.resource;
}

class Links : public testing::TestWithParam<Case> {};

TEST_P(Links, LeadToTheAddress) {
  auto resource = tests::parse<Resource>(GetParam().resource);
  EXPECT_EQ(rulecheck::isLinkable(resource), *GetParam().address != '\0');
  if (rulecheck::isLinkable(resource)) {
    rulecheck::encodeAddress(&resource);
    EXPECT_EQ(Converter::href(resource), GetParam().address);
  }
}

TEST_P(Links, HaveWords) {
  const auto resource = tests::parse<Resource>(GetParam().resource);
  EXPECT_EQ(rulecheck::describe(resource), GetParam().words);
}

INSTANTIATE_TEST_SUITE_P(
    Schemes, Links,
    testing::Values(
        Case{"web", R"(scheme: HTTP host: "h" port: 0 path: "p" query: "q=1&r" fragment: "f")",
             "http://h:0/p?q=1&r#f", "http://h:0/p?q=1&r#f"},
        Case{"secure_web", R"(scheme: HTTPS host: "user@h" path: "/p")", "https://user@h/p",
             "https://user@h/p"},
        Case{"file", R"(scheme: FILE path: "/src/top.v" fragment: "L7")", "file:///src/top.v#L7",
             "file:///src/top.v#L7"},
        Case{"file_of_localhost", R"(scheme: FILE host: "localhost" path: "p")",
             "file://localhost/p", "file://localhost/p"},
        Case{"file_of_a_host", R"(scheme: FILE host: "h" path: "/p")", "", "file://h/p"},
        Case{"file_of_a_blank_host", R"(scheme: FILE host: " " path: "/p")", "", "file:// /p"},
        Case{"file_of_a_port", R"(scheme: FILE port: 445 path: "/p")", "", "file://:445/p"},
        Case{"file_of_a_host_in_its_path", R"(scheme: FILE path: "//h/..///p")", "file:///h/../p",
             "file:////h/..///p"},
        Case{"mail_by_host", R"(scheme: MAILTO host: "a@b.example")", "mailto:a@b.example",
             "a@b.example"},
        Case{"mail_with_headers", R"(scheme: MAILTO host: "a@b.example" query: "cc=c@d.example")",
             "", "a@b.example"},
        Case{"mail_with_headers_in_its_address", R"(scheme: MAILTO host: "a@b?cc=c@d")",
             "mailto:a@b%3Fcc=c@d", "a@b?cc=c@d"},
        Case{"mail_by_path", R"(scheme: MAILTO path: "a@b.example")", "mailto:a@b.example",
             "a@b.example"},
        Case{"mail_that_says_so", R"(scheme: MAILTO host: "mailto:a@b.example")",
             "mailto:a@b.example", "a@b.example"},
        Case{"mail_with_more_parts",
             R"(scheme: MAILTO host: "a@b.example" port: 25 path: "/p" fragment: "f")",
             "mailto:a@b.example", "a@b.example"},
        Case{"file_transfer", R"(scheme: FTP host: "h" path: "p")", "", "ftp://h/p"},
        Case{"chat", R"(scheme: IRC host: "h" path: "room")", "", "irc://h/room"},
        Case{"no_scheme", R"(host: "h" path: "p")", "", "h/p"},
        Case{"script_by_file_transfer", R"(scheme: FTP host: 'javascript:alert(1)')", "",
             "ftp://javascript:alert(1)"},
        Case{"script_without_scheme", R"(host: 'javascript:alert(1)')", "", "javascript:alert(1)"},
        Case{"script_by_mail", R"(scheme: MAILTO host: 'javascript:alert(1)')",
             "mailto:javascript:alert(1)", "javascript:alert(1)"}),
    [](const auto& tested) { return tested.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Data, Links,
    testing::Values(
        Case{"text", R"(scheme: DATA media_type: "text/plain" data: "see line 4")", "",
             "see line 4"},
        Case{"page", R"(scheme: DATA media_type: "text/html" data: "<b>hi</b>")", "", "<b>hi</b>"},
        Case{"data_of_no_type", R"(scheme: DATA data: "hi")", "", "hi"},
        Case{"image", R"(scheme: DATA media_type: "image/png" encoding: "base64" data: "aGk=")", "",
             "inline data (image/png)"},
        Case{"page_without_data", R"(scheme: DATA media_type: "text/html")", "",
             "inline data (text/html)"},
        Case{"nothing", "scheme: DATA", "", "inline data"}),
    [](const auto& tested) { return tested.param.name; });

INSTANTIATE_TEST_SUITE_P(
    MissingParts, Links,
    testing::Values(Case{"web_without_host", R"(scheme: HTTP path: "/p")", "", "http:///p"},
                    Case{"web_with_blank_host", R"(scheme: HTTPS host: " ")", "", "https:// "},
                    Case{"file_without_path", R"(scheme: FILE fragment: "L7")", "", "file://#L7"},
                    Case{"mail_without_address", R"(scheme: MAILTO query: "q")", "", "no address"},
                    Case{"mail_that_only_says_so", R"(scheme: MAILTO host: "mailto:")", "",
                         "no address"},
                    Case{"nothing_at_all", "", "", "no address"}),
    [](const auto& tested) { return tested.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Encoding, Links,
    testing::Values(Case{"space", R"(scheme: FILE path: "/a b")", "file:///a%20b", "file:///a b"},
                    Case{"end_of_attribute", R"(scheme: HTTP host: 'x" onclick="alert(1)')",
                         "http://x%22%20onclick=%22alert(1)", "http://x\" onclick=\"alert(1)"},
                    Case{"delimiters_in_a_path", R"(scheme: FILE path: "/a?b#c")",
                         "file:///a%3Fb%23c", "file:///a?b#c"},
                    Case{"delimiter_in_a_query", R"(scheme: HTTP host: "h" query: "a?b#c")",
                         "http://h?a?b%23c", "http://h?a?b#c"},
                    Case{"backslash", R"(scheme: HTTP host: "good.example\\@bad.example")",
                         "http://good.example%5C@bad.example", "http://good.example\\@bad.example"},
                    Case{"line_feed_and_tab", R"(scheme: HTTP host: "h" path: "a\nb\tc")",
                         "http://h/a%0Ab%09c", "http://h/a\nb\tc"},
                    Case{"letters_outside_of_ascii", R"(scheme: FILE path: "/\303\244.v")",
                         "file:///%C3%A4.v", "file:///\xC3\xA4.v"},
                    Case{"bytes_that_are_no_text", R"(scheme: FILE path: "/\377")", "file:///%FF",
                         "file:///\xFF"},
                    Case{"encoding_that_is_there", R"(scheme: FILE path: "/a%20b%2f")",
                         "file:///a%20b%2f", "file:///a%20b%2f"},
                    Case{"percent_sign_alone", R"(scheme: FILE path: "/100%.v%2")",
                         "file:///100%25.v%252", "file:///100%.v%2"}),
    [](const auto& tested) { return tested.param.name; });

}  // namespace
