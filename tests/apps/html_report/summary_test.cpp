#include "html_report/summary.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <ostream>

namespace {

struct Time {
  const char* name;
  std::int64_t milliseconds;
  const char* text;
};

void PrintTo(const Time& tested, std::ostream* out) {
  *out << tested.milliseconds;
}

class UtcTime : public testing::TestWithParam<Time> {};

TEST_P(UtcTime, IsReadable) {
  EXPECT_EQ(html_report::utcTime(GetParam().milliseconds), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Table, UtcTime,
    testing::Values(Time{"epoch", 0, "1970-01-01 00:00:00"},
                    Time{"fraction_is_left_out", 1773500966999, "2026-03-14 15:09:26"},
                    Time{"fraction_before_the_epoch", -1, "1969-12-31 23:59:59"},
                    Time{"second_before_the_epoch", -1000, "1969-12-31 23:59:59"},
                    Time{"leap_day", 951782400000, "2000-02-29 00:00:00"},
                    Time{"first_of_year_1", -62135596800000, "0001-01-01 00:00:00"},
                    Time{"before_year_1", -62135596800001, ""},
                    Time{"last_of_year_9999", 253402300799999, "9999-12-31 23:59:59"},
                    Time{"after_year_9999", 253402300800000, ""},
                    Time{"largest", std::numeric_limits<std::int64_t>::max(), ""},
                    Time{"smallest", std::numeric_limits<std::int64_t>::min(), ""}),
    [](const auto& tested) { return tested.param.name; });

}  // namespace
