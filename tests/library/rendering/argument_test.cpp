// SPDX-License-Identifier: Apache-2.0

// HTML of message arguments.

#include <gtest/gtest.h>

#include <string>

#include "rendering/counted_converter.h"
#include "support/messages.h"

namespace {

using tests::parse;
using vok::rulecheck::Arg;
using Converter = tests::CountedConverter;

struct ArgumentCase {
  const char* name;
  const char* argument;
  const char* html;
};

const ArgumentCase argumentCases[] = {
    {"an empty argument is nothing", "", ""},

    {"a reference", "ref { type: PORT name: 'clk' url { scheme: FILE path: '/t.v' } }",
     "<a href=\"file:///t.v\">clk</a>"},
    {"an empty reference", "ref { }", "array"},
    {"a reference wins over everything",
     "ref { name: 'R' } refs { ref { name: 'S' } } uri { link_text: 'L' } "
     "uris { uri { link_text: 'M' } } scalar { int_val: 1 } string_val: 's'",
     "R"},
    {"a reference whose url lacks a scheme still wins", "ref { url { } } string_val: 's'", ""},

    {"a link", "uri { link_text: 'L' url { scheme: FILE path: '/t.v' } }",
     "<a href=\"file:///t.v\">L</a>"},
    {"an empty link", "uri { }", "<empty>"},
    {"a link wins over both lists, the string and the scalar",
     "refs { ref { name: 'S' } } uri { link_text: 'L' } uris { uri { link_text: 'M' } } "
     "scalar { int_val: 1 } string_val: 's'",
     "L"},
    {"a link wins over a string", "uri { link_text: 'L' } string_val: 's'", "L"},

    {"three references", "refs { ref { name: 'P' } ref { name: 'Q' } ref { name: 'R' } }", "P,Q,R"},
    {"one reference in a list", "refs { ref { name: 'P' } }", "P"},
    {"an empty list of references is nothing", "refs { }", ""},
    {"an empty list of references still wins", "refs { } string_val: 's' scalar { int_val: 1 }",
     ""},
    {"a list of references wins over a list of links",
     "refs { ref { name: 'P' } } uris { uri { link_text: 'L' } }", "P"},
    {"empty fragments keep their place in a list",
     "refs { ref { name: '' } ref { name: 'Q' } ref { url { } } }", ",Q,"},
    {"references and anchors in one list",
     "refs { ref { type: LOOP id: 1 } ref { name: 'Q' url { scheme: FILE path: '/q' } } }",
     "loop #1,<a href=\"file:///q\">Q</a>"},

    {"several links", "uris { uri { link_text: 'L' } uri { } uri { link_text: 'M' } }",
     "L,<empty>,M"},
    {"an empty list of links is nothing", "uris { }", ""},
    {"an empty list of links still wins", "uris { } string_val: 's'", ""},
    {"a list of links wins over the string and the scalar",
     "uris { uri { link_text: 'L' } } scalar { int_val: 1 } string_val: 's'", "L"},

    {"a string", "string_val: 's'", "s"},
    {"a string is not escaped", "string_val: '<&\">'", "<&\">"},
    {"a string wins over the scalar", "string_val: 's' scalar { int_val: 1 }", "s"},
    {"an empty string wins over the scalar", "string_val: '' scalar { int_val: 1 }", ""},

    {"an empty scalar is nothing", "scalar { }", ""},
    {"an integer", "scalar { int_val: -42 }", "-42"},
    {"an integer wins over a double", "scalar { int_val: -42 double_val: 1.5 }", "-42"},
    {"an integer wins over a string", "scalar { int_val: 0 string_val: 's' address: 'a' }", "0"},
    {"the largest integer is shown in full", "scalar { int_val: 9223372036854775807 }",
     "9223372036854775807"},
    {"the smallest integer is shown in full", "scalar { int_val: -9223372036854775808 }",
     "-9223372036854775808"},
    {"a double shows no units", "scalar { double_val: 2.5 units: 'ns' }", "2.500000"},
    {"a double wins over a string", "scalar { double_val: 2.5 string_val: 's' }", "2.500000"},
    {"a string wins over an address", "scalar { string_val: 's' address: 'a' units: 'u' }", "s"},
    {"an empty string wins over an address", "scalar { string_val: '' address: 'a' }", ""},
    {"an address", "scalar { address: 'a' units: 'u' }", "a"},
    {"units alone are nothing", "scalar { units: 'u' }", ""},
};

TEST(ArgumentHtml, FollowsTheTable) {
  for (const ArgumentCase& c : argumentCases) {
    EXPECT_EQ(Converter::toHtml(parse<Arg>(c.argument)), c.html) << c.name;
  }
}

TEST(ArgumentHtml, OfALongListIsItsMembersJoinedByCommas) {
  Arg argument;
  std::string expected;
  for (int id = 0; id < 5000; ++id) {
    auto* reference = argument.mutable_refs()->add_ref();
    reference->set_type(vok::rulecheck::Reference::LOOP);
    reference->set_id(id);
    expected += (id == 0 ? "loop #" : ",loop #") + std::to_string(id);
  }
  EXPECT_EQ(Converter::toHtml(argument), expected);
}

TEST(ArgumentHtml, LeavesTheArgumentUnchanged) {
  for (const ArgumentCase& c : argumentCases) {
    const auto argument = parse<Arg>(c.argument);
    const std::string before = tests::bytesOf(argument);
    (void)Converter::toHtml(argument);
    EXPECT_EQ(tests::bytesOf(argument), before) << c.name;
  }
}

}  // namespace
