// SPDX-License-Identifier: Apache-2.0

// The input is a SARIF log.

#include "rulecheck/sarif.h"

#include <exception>
#include <string>

#include "fuzz.h"
#include "rulecheck/compare.h"

namespace {

using vok::rulecheck::SessionResult;

bool import(const std::string& log, SessionResult* result) {
  try {
    rulecheck::fromSarif(log, "/src", result);
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

void expectSame(const SessionResult& before, const SessionResult& after) {
  EXPECT_EQ(after.violation_count(), before.violation_count());
  EXPECT_EQ(after.waived_count(), before.waived_count());
  EXPECT_EQ(after.affirmation_count(), before.affirmation_count());
  const rulecheck::Comparison comparison = rulecheck::compare(before, after);
  EXPECT_TRUE(comparison.added.empty() && comparison.fixed.empty());
}

}  // namespace

void fuzz::run(const std::string& input) {
  SessionResult result;
  if (!import(input, &result)) {
    return;
  }
  EXPECT_EQ(result.InitializationErrorString(), "");
  const std::string log = rulecheck::toSarif(result, nullptr);
  SCOPED_TRACE(log);
  SessionResult again;
  EXPECT_TRUE(import(log, &again));
  expectSame(result, again);
  EXPECT_EQ(rulecheck::toSarif(again, nullptr), log);
}
