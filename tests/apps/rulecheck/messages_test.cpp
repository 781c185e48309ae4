// SPDX-License-Identifier: Apache-2.0

// Verilator's output, taken apart.

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "rulecheck/lint/verilator.h"
#include "rulecheck/place.h"
#include "support/messages.h"

namespace {

using rulecheck::parseMessages;
using vok::rulecheck::Arg;
using vok::rulecheck::CreateViolation;
using vok::rulecheck::Link;
using vok::rulecheck::Reference;

std::string textOf(const Link& link) {
  return "  note: " + link.link_text() + " #" + link.url().fragment() + '\n';
}

std::string textOf(const Arg& arg) {
  if (arg.has_ref()) {
    return "  names " + arg.ref().name() + '\n';
  }
  std::string text = arg.has_uri() ? textOf(arg.uri()) : "";
  for (const Link& link : arg.uris().uri()) {
    text += textOf(link);
  }
  return arg.has_string_val() ? "  note: " + arg.string_val() + '\n' : text;
}

// A line for the message, and one for each object and note.
std::string textOf(const std::vector<CreateViolation>& messages) {
  std::string text;
  for (const CreateViolation& message : messages) {
    const auto& args = message.args().arg();
    text += std::string(rulecheck::isError(message) ? "error " : "warning ") + message.rule_key() +
            ": " + (args[0].has_ref() ? '[' + args[0].ref().name() + "] " : "") +
            args[1].string_val() + '\n';
    for (int i = 2; i < args.size(); ++i) {
      text += textOf(args[i]);
    }
  }
  return text;
}

struct OutputCase {
  const char* name;
  const char* output;
  const char* messages;
};

const OutputCase outputCases[] = {
    {"nothing", "", ""},
    {"a warning", "%Warning-WIDTH: a.v:1:2: text\n", "warning WIDTH: [a.v:1:2] text\n"},
    {"an error", "%Error: a.v:1:2: text\n", "error ERROR: [a.v:1:2] text\n"},
    {"an error with a name", "%Error-PINNOTFOUND: a.v:1:2: text\n",
     "error PINNOTFOUND: [a.v:1:2] text\n"},
    {"a last line without an end", "%Error: a.v:1:2: text", "error ERROR: [a.v:1:2] text\n"},
    {"a message without a place", "%Error: No top level module found\n",
     "error ERROR: No top level module found\n"},
    {"a path with blanks and colons", "%Warning-X: /my designs/b:2/a b.v:10:20: text: 1:2: x\n",
     "warning X: [/my designs/b:2/a b.v:10:20] text: 1:2: x\n"},
    {"numbers that are no place", "%Warning-X: ratio 1:2: too narrow\n",
     "warning X: ratio 1:2: too narrow\n"},
    {"a text that begins like a place", "%Warning-X: :1:2: text\n", "warning X: :1:2: text\n"},
    {"numbers that are too long", "%Warning-X: a.v:1234567890:1: text\n",
     "warning X: a.v:1234567890:1: text\n"},
    {"a place without a text", "%Warning-X: a.v:1:2: \n", "warning X: [a.v:1:2] \n"},
    {"totals",
     "%Error: Exiting due to 3 warning(s)\n%Error: Exiting due to 1 error(s), 2 warning(s)\n"
     "        ... See the manual at https://verilator.org/verilator_doc.html\n"
     "%Error: Command Failed /usr/bin/verilator_bin --lint-only\n",
     ""},
    {"an excerpt of the source",
     "%Warning-X: a.v:12:3: text\n   12 |   assign a = b | c;\n      |   ^~~~~~\n 1234 |\n",
     "warning X: [a.v:12:3] text\n"},
    {"an instance", "%Warning-X: a.v:1:2: text\n     : ... In instance top.u_a[3].u_b\n",
     "warning X: [a.v:1:2] text\n  names top.u_a[3].u_b\n"},
    {"an instance in quotes",
     "%Warning-X: a.v:1:2: text\n     : ... note: In instance 'top.u_a[3].u_b'\n",
     "warning X: [a.v:1:2] text\n  names top.u_a[3].u_b\n"},
    {"another place", "%Warning-X: a.v:1:2: text\n     b c.v:3:4: ... Location of other driver\n",
     "warning X: [a.v:1:2] text\n  note: Location of other driver (b c.v:3:4) #L3C4\n"},
    {"a path through the design",
     "%Warning-UNOPTFLAT: a.v:1:2: text\n     a.v:3:4:      Example path: top.x\n",
     "warning UNOPTFLAT: [a.v:1:2] text\n  note: Example path: top.x (a.v:3:4) #L3C4\n"},
    {"advice", "%Warning-X: a.v:1:2: text\n     : ... Suggest add newline.\n     ... Or do not\n",
     "warning X: [a.v:1:2] text\n  note: Suggest add newline.\n  note: Or do not\n"},
    {"pointers to the manual",
     "%Warning-X: a.v:1:2: text\n"
     "     ... For warning description see https://verilator.org/warn/X?v=5.006\n"
     "     ... Use \"/* verilator lint_off X */\" and lint_on around source to disable\n"
     "     ... With current working directory '/d'\n"
     "     *** See https://verilator.org/warn/X before disabling this,\n"
     "     else you may end up with different sim results.\n",
     "warning X: [a.v:1:2] text\n"},
    {"a text of several lines", "%Warning-USERWARN: a.v:1:2: one\n   : ... In instance a\ntwo\n\n",
     "warning USERWARN: [a.v:1:2] one\ntwo\n\n  names a\n"},
    {"advice in the form of an error",
     "%Error: a.v:1:2: Cannot find file containing module: 'm'\n"
     "%Error: a.v:1:2: This may be because there's no search path specified with -I<dir>.\n"
     "        ... Looked in:\n             m.v\n",
     "error ERROR: [a.v:1:2] Cannot find file containing module: 'm'\n  names m\n"
     "  note: This may be because there's no search path specified with -I<dir>.\n"},
    {"information", "-Info: a.v:1:2: hello\n   : ... In instance a\nmore\n%Error: a.v:3:4: text\n",
     "error ERROR: [a.v:3:4] text\n"},
    {"lines before the first message",
     "perl: warning: Setting locale failed.\n  : ... In instance a\n", ""},
    {"lines behind the totals", "%Error: Exiting due to 1 error(s)\nnoise\n  noise\n", ""},
    {"an error in Verilator itself", "%Error: Internal Error: a.v:1:31: ../V3Dfg.cpp:761: Oops\n",
     "error ERROR: Internal Error: a.v:1:31: ../V3Dfg.cpp:761: Oops\n"},
    {"lines that look like messages", "%Note: a.v:1:2: x\n%Warnings-X: a.v:1:2: x\n%Error-X\n", ""},
};

TEST(Messages, AreTakenApart) {
  for (const OutputCase& c : outputCases) {
    EXPECT_EQ(c.messages, textOf(parseMessages(c.output, "/d"))) << c.name;
  }
}

TEST(Messages, HoldTheComparedValues) {
  const std::pair<const char*, const char*> cases[] = {
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
  };
  for (const auto& [text, body] : cases) {
    auto bodies = parseMessages(std::string("%Warning-X: a.v:1:2: ") + text, "/d");
    ASSERT_EQ(1u, bodies.size());
    bodies[0].clear_args();
    bodies[0].clear_rule_key();
    EXPECT_EQ(tests::textOf(tests::parse<CreateViolation>(body)), tests::textOf(bodies[0])) << text;
  }
}

TEST(Objects, AreFoundInTexts) {
  const std::pair<const char*, const char*> cases[] = {
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
      {"Input port connection 'b' expects 2 bits on the pin connection, but pin connection's "
       "VARREF 'x' generates 1 bits.",
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
  // "type name" for each object.
  for (const auto& [text, expected] : cases) {
    std::string names;
    for (const Reference& object : rulecheck::namedObjects(text)) {
      names += names.empty() ? "" : ", ";
      names += std::string(Reference::RefType_Name(object.type())) + ' ' + object.name();
    }
    EXPECT_EQ(expected, names) << text;
  }
}

}  // namespace
