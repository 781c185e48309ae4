// Verilator's output, taken apart.

#include "lint_client/messages.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/message_file.h"

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

std::string recorded(const std::string& name) {
  return textOf(parseMessages(apps::readFile(std::string(RECORDED) + "/" + name)));
}

TEST(Messages, OfANarrowDesign) {
  EXPECT_EQ(
      "warning WIDTH: [narrow.v|7|27] Operator ASSIGNDLY expects 4 bits on the Assign RHS, but "
      "Assign "
      "RHS's VARREF 'data' generates 8 bits.\n"
      "  in narrow\n"
      "warning UNUSEDSIGNAL: [narrow.v|3|18] Bits of signal are not used: 'data'[7:4]\n"
      "  in narrow\n"
      "warning UNDRIVEN: [narrow.v|6|8] Signal is not driven: 'forgotten'\n"
      "  in narrow\n"
      "warning MULTIDRIVEN: [narrow.v|4|22] Signal has multiple driving blocks with different "
      "clocking: 'q'\n"
      "  note: [narrow.v|8|25] Location of first driving block\n"
      "  note: [narrow.v|7|25] Location of other driving block\n",
      recorded("narrow.txt"));
}

TEST(Messages, OfErrors) {
  EXPECT_EQ(
      "warning DECLFILENAME: [errors.v|7|8] Filename 'errors' does not match MODULE name: 'part'\n"
      "error : [errors.v|3|24] Can't find definition of task/function: 'missing'\n"
      "error PINNOTFOUND: [errors.v|5|24] Pin not found: 'zz'\n",
      recorded("errors.txt"));
  EXPECT_EQ(
      "error : [missing_module.v|2|3] Cannot find file containing module: 'absent'\n"
      "  note: This may be because there's no search path specified with -I<dir>.\n",
      recorded("missing_module.txt"));
}

TEST(Messages, OfTheDesignsOwnWords) {
  const std::string expected =
      "warning USERWARN: [own_words.v|2|10] first line\nsecond: line\n"
      "  in own_words\n"
      "warning USERERROR: [own_words.v|4|10] it's wrong: 'a' is 5\n"
      "  in own_words\n"
      "warning UNUSEDSIGNAL: [own_words.v|1|24] Signal is not used: 'a'\n"
      "  in own_words\n";
  EXPECT_EQ(expected, recorded("own_words.txt"));
  EXPECT_EQ(expected, recorded("fatal_warnings.txt"));
}

TEST(Messages, OfManyKindsAreAllFound) {
  const std::string output = apps::readFile(std::string(RECORDED) + "/warnings.txt");
  std::size_t headers = 0;
  for (std::size_t at = output.find("%Warning-"); at != std::string::npos;
       at = output.find("%Warning-", at + 1)) {
    ++headers;
  }
  const auto messages = parseMessages(output);
  EXPECT_EQ(headers, messages.size());
  EXPECT_GT(headers, 30u);
  for (const Message& message : messages) {
    ASSERT_TRUE(message.place) << message.text;
    EXPECT_EQ("warnings.sv", message.place->file);
    EXPECT_FALSE(message.code.empty());
    EXPECT_EQ(std::string::npos, message.text.find('\n'));
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
  };
  for (const BlockingCase& c : cases) {
    const auto messages = parseMessages(c.output);
    const Message* const error = lint_client::blockingError(messages);
    EXPECT_EQ(c.line, error == nullptr ? "" : lint_client::lineFor(*error)) << c.name;
  }
}

TEST(Messages, OfRecordedFailuresSayWhy) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"syntax.txt", "syntax.v:2:14: Define or directive not defined: '`NOT_DEFINED'"},
      {"no_top.txt", "Specified --top-module 'nothing' was not found in design."},
  };
  for (const auto& c : cases) {
    const auto messages = parseMessages(apps::readFile(std::string(RECORDED) + "/" + c.first));
    const Message* const error = lint_client::blockingError(messages);
    ASSERT_NE(nullptr, error) << c.first;
    EXPECT_EQ(c.second, lint_client::lineFor(*error));
  }
}

TEST(Messages, HaveOneLineForTheTerminal) {
  Message message;
  message.text = "one\ntwo";
  EXPECT_EQ("one", lint_client::lineFor(message));
  message.place = Place{"a b.v", 3, 4};
  EXPECT_EQ("a b.v:3:4: one", lint_client::lineFor(message));
}

TEST(Messages, TellErrorsFromWarnings) {
  EXPECT_FALSE(lint_client::hasErrors(parseMessages("%Warning-X: a.v:1:2: text\n")));
  EXPECT_TRUE(lint_client::hasErrors(
      parseMessages("%Warning-X: a.v:1:2: text\n%Error-Y: a.v:1:2: text\n")));
}

}  // namespace
