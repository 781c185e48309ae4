// SPDX-License-Identifier: Apache-2.0

// Verilator's output, taken apart.

#include "lint_client/messages.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using lint_client::Message;
using lint_client::Note;
using lint_client::parseMessages;
using lint_client::Place;

std::string textOf(const std::optional<Place>& place) {
  return !place ? ""
                : "[" + place->file + "|" + std::to_string(place->line) + "|" +
                      std::to_string(place->column) + "] ";
}

// One line for the message, one for its instance and one for each note.
std::string textOf(const std::vector<Message>& messages) {
  std::string text;
  for (const Message& message : messages) {
    text += std::string(message.isError ? "error " : "warning ") + message.code + ": " +
            textOf(message.place) + message.text + '\n';
    text += message.instance.empty() ? "" : "  in " + message.instance + '\n';
    for (const Note& note : message.notes) {
      text += "  note: " + textOf(note.place) + note.text + '\n';
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
    {"a warning", "%Warning-WIDTH: a.v:1:2: text\n", "warning WIDTH: [a.v|1|2] text\n"},
    {"an error", "%Error: a.v:1:2: text\n", "error : [a.v|1|2] text\n"},
    {"an error with a name", "%Error-PINNOTFOUND: a.v:1:2: text\n",
     "error PINNOTFOUND: [a.v|1|2] text\n"},
    {"a last line without an end", "%Error: a.v:1:2: text", "error : [a.v|1|2] text\n"},
    {"a message without a place", "%Error: No top level module found\n",
     "error : No top level module found\n"},
    {"a path with blanks and colons", "%Warning-X: /my designs/b:2/a b.v:10:20: text: 1:2: x\n",
     "warning X: [/my designs/b:2/a b.v|10|20] text: 1:2: x\n"},
    {"numbers that are no place", "%Warning-X: ratio 1:2: too narrow\n",
     "warning X: ratio 1:2: too narrow\n"},
    {"a text that begins like a place", "%Warning-X: :1:2: text\n", "warning X: :1:2: text\n"},
    {"numbers that are too long", "%Warning-X: a.v:1234567890:1: text\n",
     "warning X: a.v:1234567890:1: text\n"},
    {"a place without a text", "%Warning-X: a.v:1:2: \n", "warning X: [a.v|1|2] \n"},
    {"totals",
     "%Error: Exiting due to 3 warning(s)\n%Error: Exiting due to 1 error(s), 2 warning(s)\n"
     "        ... See the manual at https://verilator.org/verilator_doc.html\n"
     "%Error: Command Failed /usr/bin/verilator_bin --lint-only\n",
     ""},
    {"an excerpt of the source",
     "%Warning-X: a.v:12:3: text\n   12 |   assign a = b | c;\n      |   ^~~~~~\n 1234 |\n",
     "warning X: [a.v|12|3] text\n"},
    {"an instance", "%Warning-X: a.v:1:2: text\n     : ... In instance top.u_a[3].u_b\n",
     "warning X: [a.v|1|2] text\n  in top.u_a[3].u_b\n"},
    {"another place", "%Warning-X: a.v:1:2: text\n     b c.v:3:4: ... Location of other driver\n",
     "warning X: [a.v|1|2] text\n  note: [b c.v|3|4] Location of other driver\n"},
    {"a path through the design",
     "%Warning-UNOPTFLAT: a.v:1:2: text\n     a.v:3:4:      Example path: top.x\n",
     "warning UNOPTFLAT: [a.v|1|2] text\n  note: [a.v|3|4] Example path: top.x\n"},
    {"advice", "%Warning-X: a.v:1:2: text\n     : ... Suggest add newline.\n     ... Or do not\n",
     "warning X: [a.v|1|2] text\n  note: Suggest add newline.\n  note: Or do not\n"},
    {"pointers to the manual",
     "%Warning-X: a.v:1:2: text\n"
     "     ... For warning description see https://verilator.org/warn/X?v=5.006\n"
     "     ... Use \"/* verilator lint_off X */\" and lint_on around source to disable\n"
     "     *** See https://verilator.org/warn/X before disabling this,\n"
     "     else you may end up with different sim results.\n",
     "warning X: [a.v|1|2] text\n"},
    {"a text of several lines", "%Warning-USERWARN: a.v:1:2: one\n   : ... In instance a\ntwo\n\n",
     "warning USERWARN: [a.v|1|2] one\ntwo\n\n  in a\n"},
    {"advice in the form of an error",
     "%Error: a.v:1:2: Cannot find file containing module: 'm'\n"
     "%Error: a.v:1:2: This may be because there's no search path specified with -I<dir>.\n"
     "        ... Looked in:\n             m.v\n",
     "error : [a.v|1|2] Cannot find file containing module: 'm'\n"
     "  note: This may be because there's no search path specified with -I<dir>.\n"},
    {"information", "-Info: a.v:1:2: hello\n   : ... In instance a\nmore\n%Error: a.v:3:4: text\n",
     "error : [a.v|3|4] text\n"},
    {"lines before the first message",
     "perl: warning: Setting locale failed.\n  : ... In instance a\n", ""},
    {"lines behind the totals", "%Error: Exiting due to 1 error(s)\nnoise\n  noise\n", ""},
    {"an error in Verilator itself", "%Error: Internal Error: a.v:1:31: ../V3Dfg.cpp:761: Oops\n",
     "error : Internal Error: a.v:1:31: ../V3Dfg.cpp:761: Oops\n"},
    {"lines that look like messages", "%Note: a.v:1:2: x\n%Warnings-X: a.v:1:2: x\n%Error-X\n", ""},
};

TEST(Messages, AreTakenApart) {
  for (const OutputCase& c : outputCases) {
    EXPECT_EQ(c.messages, textOf(parseMessages(c.output))) << c.name;
  }
}

struct BlockingCase {
  const char* name;
  const char* output;
  // Empty: the files could be checked.
  const char* line;
};

TEST(Messages, TellWhetherTheFilesCouldBeChecked) {
  const BlockingCase cases[] = {
      {"nothing", "", ""},
      {"warnings", "%Warning-X: a.v:1:2: text\n", ""},
      {"an error in the design", "%Error: a.v:1:2: text\n%Error-X: text\n", ""},
      {"a syntax error", "%Error: a.v:1:2: syntax error, unexpected ';'\n",
       "a.v:1:2: syntax error, unexpected ';'"},
      {"a syntax error behind its cause",
       "%Warning-X: a.v:1:1: w\n%Error: a.v:1:2: Unterminated string\n"
       "%Error: a.v:1:9: syntax error, unexpected end of file\n%Error: Cannot continue\n",
       "a.v:1:2: Unterminated string"},
      {"an error outside of the design", "%Warning-X: a.v:1:1: w\n%Error: No top level module\n",
       "No top level module"},
      {"an error in the design that stops the tool",
       "%Error-TASKNSVAR: a.v:1:2: text\n%Error: Verilator internal fault, sorry.\n", ""},
      {"an error of the tool", "%Error: Internal Error: a.v:1:2: ../V3Dfg.cpp:761: Oops\n",
       "Internal Error: a.v:1:2: ../V3Dfg.cpp:761: Oops"},
      {"two lines", "%Error: one\ntwo\n", "one"},
  };
  for (const BlockingCase& c : cases) {
    const auto messages = parseMessages(c.output);
    const Message* const error = lint_client::blockingError(messages);
    EXPECT_EQ(c.line, error == nullptr ? "" : lint_client::lineFor(*error)) << c.name;
  }
}

}  // namespace
