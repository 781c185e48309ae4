// The table of docs/protocol.md on what a reader may rely on, row by row.

#include <gmock/gmock.h>
#include <google/protobuf/descriptor.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "malformed_input/page.h"
#include "parse_and_serialize.h"
#include "support/messages.h"

namespace {

using google::protobuf::Descriptor;
using testing::HasSubstr;

const std::vector<std::string>& section() {
  static const std::vector<std::string> lines = tests::linesOfSection("What a reader may rely on");
  return lines;
}

// "08 (a3 06)*2" as "08 a3 06 a3 06".
std::string withoutRepetitions(std::string digits) {
  static const std::regex repetition(R"(\(([^)]*)\)\*(\d+))");
  for (std::smatch parts; std::regex_search(digits, parts, repetition);) {
    std::string repeated;
    for (int i = std::stoi(parts[2]); i > 0; --i) {
      repeated += parts[1].str() + (i > 1 ? " " : "");
    }
    digits = parts.prefix().str() + repeated + parts.suffix().str();
  }
  return digits;
}

// What the last cell of a row says of the release that this is compiled with,
// such as "refused; 3.3.0: `18 01`".
std::string written(const std::string& cell) {
  static const std::regex parts(R"((?:`([^`]+)`|refused)(?:; 3\.3\.0: `([^`]+)`)?)");
  std::smatch match;
  EXPECT_TRUE(std::regex_match(cell, match, parts)) << cell;
  const int part = GOOGLE_PROTOBUF_VERSION < 3004000 && match[2].matched ? 2 : 1;
  return match[part].matched ? withoutRepetitions(match[part]) : "refused";
}

TEST(PageOnTheProtocol, TellsWhatIsReadAndWritten) {
  const std::regex row(R"(\| (.+) \| `(\w+)` \| `([^`]+)` \| (.+) \|)");
  int rows = 0;
  for (const std::string& line : section()) {
    const bool isHead = line.rfind("| What ", 0) == 0 || line.rfind("|---", 0) == 0;
    if (line.rfind("|", 0) != 0 || isHead) {
      continue;
    }
    std::smatch cells;
    ASSERT_TRUE(std::regex_match(line, cells, row)) << line;
    ++rows;
    const auto prototype = tests::newMessage(cells[2]);
    EXPECT_EQ(tests::writtenAgain(*prototype, tests::fromHex(withoutRepetitions(cells[3]))),
              written(cells[4]))
        << line;
  }
  EXPECT_EQ(rows, 62);
}

// The number of messages in the longest chain that begins with that message; 0
// if one contains itself.
int longestChain(const Descriptor* message, std::set<const Descriptor*> outer) {
  if (!outer.insert(message).second) {
    return 0;
  }
  int longest = 0;
  for (int i = 0; i < message->field_count(); ++i) {
    if (const Descriptor* inner = message->field(i)->message_type()) {
      const int chain = longestChain(inner, outer);
      if (chain == 0) {
        return 0;
      }
      longest = std::max(longest, chain);
    }
  }
  return longest + 1;
}

TEST(PageOnTheProtocol, TellsTheLongestChainOfMessages) {
  int longest = 0;
  for (const google::protobuf::Message* prototype : tests::allMessages()) {
    const int chain = longestChain(prototype->GetDescriptor(), {});
    EXPECT_GT(chain, 0) << std::string(prototype->GetTypeName());
    longest = std::max(longest, chain);
  }
  EXPECT_EQ(longest, longestChain(vok::rulecheck::Response::descriptor(), {}));
  EXPECT_THAT(section(),
              testing::Contains(HasSubstr("from a `Response`, has " + std::to_string(longest))));
}

}  // namespace
