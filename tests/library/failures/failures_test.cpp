// Failures of the C and C++ libraries while a text is made: std::bad_alloc comes
// out, never a text that is cut, and nothing is leaked or changed.

#include <gtest/gtest.h>
#include <vok/rulecheck/Converter.h>

#include <cfenv>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <optional>
#include <string>

#include "allocations.h"
#include "calls.h"
#include "failing_printf.h"
#include "support/messages.h"
#include "support/numeric_settings.h"

namespace {

using tests::Call;
using tests::FailingAllocation;
using tests::FailingPrintf;

TEST(Allocations, CanBeCountedAndMadeToFail) {
  const auto outstanding = tests::outstandingAllocations();
  const FailingAllocation scope(1);
  void* const first = operator new(1);
  EXPECT_EQ(tests::outstandingAllocations(), outstanding + 1);
  EXPECT_THROW((void)operator new(1), std::bad_alloc);
  EXPECT_TRUE(scope.failed());
  operator delete(first);
  EXPECT_EQ(tests::outstandingAllocations(), outstanding);
}

#ifndef SANITIZED
TEST(Allocations, OfTheCLibraryCanBeMadeToFail) {
  const FailingAllocation scope(0);
  char* const copy = strdup("text");
  EXPECT_EQ(copy, nullptr);
  std::free(copy);
  EXPECT_TRUE(scope.failed());
}
#endif

std::string bytesOfMessage(const Call& call) {
  return call.message == nullptr ? "" : tests::bytesOf(*call.message);
}

// The text, or nothing if std::bad_alloc came out.
std::optional<std::string> render(const Call& call) {
  try {
    return call.render();
  } catch (const std::bad_alloc&) {
    return std::nullopt;
  }
}

// Lets one operation of a call fail, the first one if number is 0. Returns
// whether there was one of that number.
template <typename Failing>
bool failOne(int number, const Call& call, const std::string& text) {
  SCOPED_TRACE("failure " + std::to_string(number));
  const std::string before = bytesOfMessage(call);
  std::optional<std::string> result;
  bool failed = false;
  const auto outstanding = tests::outstandingAllocations();
  {
    const Failing scope(static_cast<unsigned>(number));
    result = render(call);
    failed = scope.failed();
  }
  if (failed) {
    EXPECT_FALSE(result.has_value()) << "a failure was swallowed: " << *result;
    EXPECT_EQ(tests::outstandingAllocations(), outstanding);
  } else {
    EXPECT_EQ(result, text);
  }
  EXPECT_EQ(bytesOfMessage(call), before);
  EXPECT_EQ(call.render(), text) << "the next call";
  return failed;
}

// Lets each operation of a call fail in turn; returns how many there are.
template <typename Failing>
int failEach(const Call& call) {
  SCOPED_TRACE(call.name);
  const std::string text = call.render();
  int number = 0;
  while (!testing::Test::HasFailure() && failOne<Failing>(number, call, text)) {
    ++number;
  }
  return number;
}

struct Setting {
  const char* locale;
  int roundingMode;
};

const Setting settings[] = {
    {"C", FE_TONEAREST},     {"C", FE_UPWARD},         {"C", FE_DOWNWARD},
    {"comma", FE_TONEAREST}, {"comma", FE_TOWARDZERO}, {"two_bytes", FE_UPWARD},
};

TEST(Failures, OfEachAllocationComeOut) {
  int failures = 0;
  for (const Setting& setting : settings) {
    const tests::ThreadLocale locale(setting.locale);
    const tests::RoundingMode mode(setting.roundingMode);
    for (const Call& call : tests::callsOfEveryFunction()) {
      const int ofThisCall = failEach<FailingAllocation>(call);
      if (call.render().size() > std::string().capacity()) {
        EXPECT_GE(ofThisCall, 1) << call.name;
      }
      failures += ofThisCall;
    }
  }
  std::printf("%d allocations failed\n", failures);
}

// The C library may allocate while it formats a number, and say so.
TEST(Failures, OfEachCallOfPrintfComeOut) {
  for (const Setting& setting : settings) {
    const bool needsPrintf = setting.locale[0] != 'C' || setting.roundingMode != FE_TONEAREST;
    const tests::ThreadLocale locale(setting.locale);
    const tests::RoundingMode mode(setting.roundingMode);
    for (const Call& call : tests::callsWithDoubles()) {
      EXPECT_EQ(failEach<FailingPrintf>(call) > 0, needsPrintf) << call.name;
    }
  }
}

// The longest text that has room is that of -DBL_MAX with a decimal point of
// MB_LEN_MAX bytes.
TEST(Failures, OfALocaleWhoseDecimalPointIsTooLong) {
  constexpr int longest = 316 + MB_LEN_MAX;
  const tests::RoundingMode mode(FE_UPWARD);
  const auto scalar = tests::parse<vok::rulecheck::Scalar>("double_val: 1.5");
  const Call call = {"", nullptr, [&] { return vok::rulecheck::Converter::toString(scalar); }};
  for (const int width : {1, 317, longest, longest + 1, longest + 2, longest + 44, 1000000}) {
    const tests::LongPrintf scope(width);
    const auto text = width > longest
                          ? std::nullopt
                          : std::optional(std::string(static_cast<std::size_t>(width), '0'));
    EXPECT_EQ(render(call), text) << width;
  }
}

}  // namespace
