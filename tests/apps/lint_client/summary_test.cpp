#include "lint_client/summary.h"

#include <gtest/gtest.h>

#include <string>

#include "support/messages.h"

namespace {

using lint_client::Findings;
using vok::rulecheck::SessionResult;

const char* const kResult =
    "session { name: 'n' } waived_count: 2 affirmation_count: 40"
    " violations {"
    "  hashmap { key: 1 value { id: 1 severity: SEV_ADVISORY } }"
    "  hashmap { key: 2 value { id: 2 severity: SEV_ERROR } }"
    "  hashmap { key: 3 value { id: 3 severity: SEV_ADVISORY } } }";

std::string summaryOf(const Findings& findings) {
  const lint_client::Connection connection(lint_client::Transport{});
  return lint_client::summary(tests::parse<SessionResult>(kResult), connection, findings);
}

const std::string kCounts =
    "Findings\n"
    "  fatal                 0\n"
    "  error                 1\n"
    "  critical warning      0\n"
    "  warning               0\n"
    "  advisory              2\n"
    "  waived                2\n"
    "  rules affirmed       40\n";

const std::string kTraffic = "0 requests travelled in 0 bytes, their answers in 0 bytes\n";

TEST(Summaries, CountFindingsBySeverity) {
  EXPECT_EQ(kCounts + kTraffic, summaryOf(Findings()));
}

TEST(Summaries, TellOfWaiversWithoutFindings) {
  Findings findings;
  findings.messages = lint_client::parseMessages("%Warning-WIDTH: a.v:1:2: text\n");
  findings.waivers = {lint_client::parseWaiver("WIDTH:a.v=used"),
                      lint_client::parseWaiver("WIDTH:b.v=unused"),
                      lint_client::parseWaiver("LATCH=unused")};
  EXPECT_EQ(
      kCounts + "No finding for the waiver WIDTH:b.v\nNo finding for the waiver LATCH\n" + kTraffic,
      summaryOf(findings));
}

TEST(Summaries, TellOfChecksThatWereCutShort) {
  Findings findings;
  findings.messages = lint_client::parseMessages("%Error: a.v:1:2: text\n");
  EXPECT_EQ(kCounts + "Errors cut the check short: no rule is affirmed\n" + kTraffic,
            summaryOf(findings));
}

}  // namespace
