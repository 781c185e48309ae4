// SPDX-License-Identifier: Apache-2.0

// What a message says, in the protocol's terms.

#include "lint_client/finding_arguments.h"

#include <gtest/gtest.h>

#include <string>

#include "lint_client/addresses.h"
#include "lint_client/names.h"
#include "support/messages.h"

namespace {

using lint_client::Message;
using lint_client::parseMessages;
using vok::rulecheck::ArgList;
using vok::rulecheck::CreateViolation;
using vok::rulecheck::Reference;

Message messageFrom(const std::string& output) {
  const auto messages = parseMessages(output);
  EXPECT_EQ(1u, messages.size()) << output;
  return messages.at(0);
}

struct ArgumentsCase {
  const char* name;
  const char* output;
  const char* arguments;
};

const char* const kPlace =
    "arg { ref { type: FILE name: 'a.v:12'"
    "  url { scheme: FILE path: '/d/rtl/a.v' fragment: 'L12' } } }";

const ArgumentsCase argumentsCases[] = {
    {"place and text", "%Warning-X: rtl/a.v:12:3: text\n", "arg { string_val: 'text' }"},
    {"the name at the end of the text", "%Warning-X: rtl/a.v:12:3: Signal is not used: 'busy'\n",
     "arg { string_val: 'Signal is not used' } arg { ref { type: VARIABLE name: 'busy' } }"},
    {"names in the text",
     "%Warning-X: rtl/a.v:12:3: Filename 'a' does not match MODULE name: 'sub'\n",
     "arg { string_val: 'Filename \\'a\\' does not match MODULE name' }"
     "arg { refs { ref { type: FILE name: 'a' } ref { type: HIERARCHY name: 'sub' } } }"},
    {"instance, other place and advice",
     "%Warning-X: rtl/a.v:12:3: text\n  : ... In instance top.u\n"
     "  : ... Suggest this\n  rtl/b.v:1:2: ... Location of use\n",
     "arg { string_val: 'text' } arg { ref { type: HIERARCHY name: 'top.u' } }"
     "arg { uri { link_text: 'Location of use (b.v:1)'"
     "  url { scheme: FILE path: '/d/rtl/b.v' fragment: 'L1' } } }"
     "arg { string_val: 'Suggest this' }"},
    {"several other places",
     "%Warning-X: rtl/a.v:12:3: text\n  rtl/b.v:1:2: ... One\n  /e/c.v:3:4: ... Two\n",
     "arg { string_val: 'text' } arg { uris {"
     "  uri { link_text: 'One (b.v:1)' url { scheme: FILE path: '/d/rtl/b.v' fragment: 'L1' } }"
     "  uri { link_text: 'Two (c.v:3)' url { scheme: FILE path: '/e/c.v' fragment: 'L3' } } } }"},
};

TEST(FindingArguments, HoldPlaceTextAndNames) {
  for (const ArgumentsCase& c : argumentsCases) {
    const auto expected = tests::parse<ArgList>(std::string(kPlace) + c.arguments);
    EXPECT_EQ(tests::textOf(expected),
              tests::textOf(lint_client::argumentsOf(messageFrom(c.output), "/d")))
        << c.name;
  }
}

TEST(FindingArguments, NameTheDesignIfThereIsNoPlace) {
  EXPECT_EQ(tests::textOf(
                tests::parse<ArgList>("arg { string_val: 'design' } arg { string_val: 'text' }")),
            tests::textOf(lint_client::argumentsOf(messageFrom("%Warning-X: text\n"), "/d")));
}

struct ValuesCase {
  const char* text;
  const char* body;
};

const ValuesCase valuesCases[] = {
    {"Operator ASSIGNDLY expects 4 bits on the Assign RHS, but Assign RHS's VARREF 'data' "
     "generates 8 bits.",
     "threshold_value { int_val: 4 units: 'bits' } actual_value { int_val: 8 units: 'bits' }"},
    {"Logical operator IF expects 1 bit on the If, but If's VARREF 'a' generates 8 bits.",
     "threshold_value { int_val: 1 units: 'bits' } actual_value { int_val: 8 units: 'bits' }"},
    {"Operator EQ expects 32 or 26 bits on the LHS, but LHS's VARREF 'count' generates 5 bits.",
     "threshold_value { string_val: '32 or 26' units: 'bits' }"
     "actual_value { int_val: 5 units: 'bits' }"},
    {"Bit extraction of array[15:0] requires 4 bit index, not 2 bits.",
     "threshold_value { int_val: 4 units: 'bits' } actual_value { int_val: 2 units: 'bits' }"},
    {"Selection index out of range: 9:9 outside 7:0",
     "threshold_value { string_val: '7:0' } actual_value { string_val: '9:9' }"},
    {"Signal is not used: 'expects'", ""},
    {"It expects 4 bits", ""},
    {"It generates 4 bits and expects nothing", ""},
    {"", ""},
};

TEST(FindingArguments, HoldTheComparedValues) {
  for (const ValuesCase& c : valuesCases) {
    Message message;
    message.text = c.text;
    CreateViolation body;
    lint_client::addValues(message, &body);
    EXPECT_EQ(tests::textOf(tests::parse<CreateViolation>(c.body)), tests::textOf(body)) << c.text;
  }
}

struct NamesCase {
  const char* text;
  // "type name" for each object.
  const char* names;
};

const NamesCase namesCases[] = {
    {"Cell has missing pin: 'dd'", "PORT dd"},
    {"Cell pin connected by name with empty reference: 'c'", "PORT c"},
    {"Signal is not driven: 'a_1'", "VARIABLE a_1"},
    {"Signal has multiple driving blocks with different clocking: 'uart.fast'",
     "VARIABLE uart.fast"},
    {"Bits of signal are not used: 'k'[31:4]", "VARIABLE k"},
    {"Parameter is not used: 'P'", "OTHER P"},
    {"Genvar is not used: 'i'", "VARIABLE i"},
    {"Can't find definition of variable: 'a'", "VARIABLE a"},
    {"Can't find definition of task/function: 'f'", "FUNCTION f"},
    {"Duplicate declaration of module: 'm'", "HIERARCHY m"},
    {"Input port connection 'b' expects 2 bits on the pin connection, but pin connection's VARREF "
     "'x' generates 1 bits.",
     "PORT b, VARIABLE x"},
    {"'r' has split_var metacomment", "OTHER r"},
    {"port 'a' and port 'a'", "PORT a"},
    {"Blocking assignment '=' in sequential logic process", ""},
    {"Suggest casez (with ?'s) in place of casex (with X's)", ""},
    {"Assign RHS's CONST '5'h1f' generates 5 bits.", ""},
    {"Define or directive not defined: '`NOPE'", ""},
    {"Redefining existing define: 'DUP', with different value: '2'", "OTHER DUP"},
    {"an 'open quote", ""},
    {"''", ""},
    {"", ""},
};

TEST(Names, AreFoundInTexts) {
  for (const NamesCase& c : namesCases) {
    std::string names;
    for (const Reference& object : lint_client::namedObjects(c.text)) {
      names += names.empty() ? "" : ", ";
      names += std::string(Reference::RefType_Name(object.type())) + ' ' + object.name();
    }
    EXPECT_EQ(c.names, names) << c.text;
  }
}

TEST(Names, AtTheEndAreTakenOff) {
  const std::pair<const char*, const char*> cases[] = {
      {"Signal is not used: 'a'", "Signal is not used"},
      {"Filename 'a' does not match MODULE name: 'b'", "Filename 'a' does not match MODULE name"},
      {"Bits of signal are not used: 'k'[31:4]", "Bits of signal are not used: 'k'[31:4]"},
      {"different value: '2'", "different value: '2'"},
      {"text", "text"},
      {"'", "'"},
      {": '", ": '"},
      {"", ""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.second, lint_client::textWithoutLastName(c.first)) << c.first;
  }
}

TEST(Addresses, EncodeWhatBrowsersMisread) {
  const std::pair<const char*, const char*> cases[] = {
      {"/a/b-c_d.e~f", "/a/b-c_d.e~f"},
      {"/a b", "/a%20b"},
      {"/100%/x", "/100%25/x"},
      {"/a?b#c", "/a%3Fb%23c"},
      {"/\"<>&'", "/%22%3C%3E%26%27"},
      {"/\xc3\xa4\x01\x7f", "/%C3%A4%01%7F"},
      {"/[a]{b}|\\^`", "/%5Ba%5D%7Bb%7D%7C%5C%5E%60"},
      {"/a:b;c", "/a:b%3Bc"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.second, lint_client::percentEncoded(c.first)) << c.first;
  }
}

TEST(Addresses, AreAbsoluteAndNameTheLine) {
  const std::pair<const char*, const char*> cases[] = {
      {"a.v", "/d/e/a.v"}, {"../a.v", "/d/a.v"}, {"./x/../a.v", "/d/e/a.v"}, {"/f/a.v", "/f/a.v"}};
  for (const auto& c : cases) {
    const auto address = lint_client::addressOf({c.first, 12, 3}, "/d/e");
    EXPECT_EQ(c.second, address.path()) << c.first;
    EXPECT_EQ("L12", address.fragment());
    EXPECT_EQ(vok::rulecheck::Resource::FILE, address.scheme());
  }
}

}  // namespace
