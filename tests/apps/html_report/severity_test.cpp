#include "html_report/severity.h"

#include <gtest/gtest.h>

#include "support/messages.h"

namespace {

using html_report::levelOf;
using vok::rulecheck::Affirmation;
using vok::rulecheck::Violation;

struct Case {
  const char* name;
  const char* violation;
  int rank;
  const char* word;
  const char* slug;
};

void PrintTo(const Case& tested, std::ostream* out) {
  *out << tested.violation;
}

class Severity : public testing::TestWithParam<Case> {};

TEST_P(Severity, HasRankAndWord) {
  const html_report::Level level = levelOf(tests::parse<Violation>(GetParam().violation));
  EXPECT_EQ(level.rank, GetParam().rank) << GetParam().violation;
  EXPECT_EQ(level.word, GetParam().word) << GetParam().violation;
  EXPECT_EQ(level.slug, GetParam().slug) << GetParam().violation;
}

INSTANTIATE_TEST_SUITE_P(
    Table, Severity,
    testing::Values(Case{"fatal", "severity: SEV_FATAL", 0, "fatal", "fatal"},
                    Case{"error", "severity: SEV_ERROR", 1, "error", "error"},
                    Case{"critical_warning", "severity: SEV_CRITICAL_WARNING", 2,
                         "critical warning", "critical-warning"},
                    Case{"warning", "severity: SEV_WARNING", 3, "warning", "warning"},
                    Case{"advisory", "severity: SEV_ADVISORY", 4, "advisory", "advisory"},
                    Case{"unknown", "severity: SEV_UNKNOWN", 5, "unknown", "unknown"},
                    Case{"absent", "", 5, "unknown", "unknown"}),
    [](const auto& tested) { return tested.param.name; });

TEST(Severity, OfAnAffirmationIsLast) {
  EXPECT_EQ(levelOf(Affirmation()).word, "affirmed");
  EXPECT_GT(levelOf(Affirmation()).rank, levelOf(Violation::SEV_UNKNOWN).rank);
}

TEST(Severity, LevelsComeInTheirOrder) {
  int rank = 0;
  for (const html_report::Level& level : html_report::violationLevels()) {
    EXPECT_EQ(level.rank, rank++);
  }
  EXPECT_EQ(rank, 6);
}

}  // namespace
