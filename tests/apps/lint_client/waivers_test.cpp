// SPDX-License-Identifier: Apache-2.0

#include "lint_client/waivers.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using lint_client::Message;
using lint_client::parseWaiver;
using lint_client::Waiver;
using lint_client::waiverFor;

TEST(Waivers, AreRuleFileAndReason) {
  const Waiver all = parseWaiver("WIDTH=known");
  EXPECT_EQ("WIDTH", all.rule);
  EXPECT_EQ("", all.file);
  EXPECT_EQ("known", all.reason);
  const Waiver one = parseWaiver("WIDTH:my dir/a:b.v=x = y: z");
  EXPECT_EQ("WIDTH", one.rule);
  EXPECT_EQ("my dir/a:b.v", one.file);
  EXPECT_EQ("x = y: z", one.reason);
}

struct MatchCase {
  const char* waiver;
  const char* rule;
  const char* file;
  bool matches;
};

TEST(Waivers, AreForARuleInAFile) {
  const MatchCase cases[] = {
      {"X=r", "X", "rtl/a.v", true},         {"X=r", "Y", "rtl/a.v", false},
      {"X=r", "XY", "rtl/a.v", false},       {"X=r", "X", "", true},
      {"X:a.v=r", "X", "rtl/a.v", true},     {"X:a.v=r", "X", "a.v", true},
      {"X:a.v=r", "X", "rtl/aa.v", false},   {"X:rtl/a.v=r", "X", "/d/rtl/a.v", true},
      {"X:tl/a.v=r", "X", "rtl/a.v", false}, {"X:rtl/a.v=r", "X", "a.v", false},
      {"X:a.v=r", "X", "", false},           {"X:a.v=r", "Y", "a.v", false},
  };
  for (const MatchCase& c : cases) {
    Message message;
    if (*c.file != '\0') {
      message.place = lint_client::Place{c.file, 1, 1};
    }
    const std::vector<Waiver> waivers = {parseWaiver(c.waiver)};
    EXPECT_EQ(c.matches, waiverFor(c.rule, message, waivers) != nullptr)
        << c.waiver << " for " << c.rule << " in " << c.file;
  }
}

TEST(Waivers, CountInTheirOrder) {
  const std::vector<Waiver> waivers = {parseWaiver("Y=other"), parseWaiver("X=first"),
                                       parseWaiver("X=second")};
  EXPECT_EQ(&waivers[1], waiverFor("X", Message(), waivers));
}

}  // namespace
