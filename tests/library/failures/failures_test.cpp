// SPDX-License-Identifier: Apache-2.0

// Failures of the C and C++ libraries while a text is rendered: the functions throw
// std::bad_alloc, never return a truncated text, and leak and change nothing.

#include <gtest/gtest.h>
#include <vok/rulecheck/Converter.h>

#include <cfenv>
#include <climits>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <new>
#include <optional>
#include <string>

#include "rendering/calls.h"
#include "support/allocations.h"
#include "support/messages.h"
#include "support/numeric_settings.h"

namespace {

// What snprintf returns, if that is set; it writes as many zeros as have room.
std::optional<int> printedLength;

int print(char* text, std::size_t size, const char* format, std::va_list values) {
  if (!printedLength) {
    return std::vsnprintf(text, size, format, values);
  }
  for (int i = 0; i < *printedLength && static_cast<std::size_t>(i) + 1 < size; ++i) {
    text[i] = '0';
  }
  return *printedLength;
}

}  // namespace

extern "C" {

int snprintf(char* text, std::size_t size, const char* format, ...) noexcept {
  std::va_list values;
  va_start(values, format);
  const int length = print(text, size, format, values);
  va_end(values);
  return length;
}

// What a hardened library calls.
int __snprintf_chk(char* text, std::size_t size, int flag, std::size_t room, const char* format,
                   ...);
int __snprintf_chk(char* text, std::size_t size, int, std::size_t, const char* format, ...) {
  std::va_list values;
  va_start(values, format);
  const int length = print(text, size, format, values);
  va_end(values);
  return length;
}

}  // extern "C"

namespace {

using tests::FailingAllocation;
using namespace vok::rulecheck;

struct Case {
  const char* function;
  const char* text;  // each asterisk is 700 letters
};

const Case doubles[] = {
    {"toString(Scalar)", "double_val: 0.5"},
    {"toString(Scalar)", "double_val: -1.7976931348623157e308 units: '*'"},
    {"toHtml(Arg)", "scalar { double_val: -1234567.5 }"},
};

const Case others[] = {
    {"toString(Scalar)", ""},
    {"toString(Scalar)", "string_val: '*' units: '*'"},
    {"toString(Scalar)", "int_val: -9223372036854775808 units: 'ns'"},
    {"toString(Reference)", "name: '*'"},
    {"toString(Reference)", "type: DATAMOVER id: -2147483648"},
    {"toString(Reference)", "type: DATAMOVER uuid: '*'"},
    {"href(Resource)", "scheme: HTTPS host: '*' port: 1 path: '*' query: '*' fragment: '*'"},
    {"href(Resource)", "scheme: DATA media_type: '*' encoding: '*' data: '*'"},
    {"toHtml(Resource)", "scheme: HTTP host: '*' path: '*'"},
    {"toHtml(Resource)", "scheme: DATA media_type: 'text/html' data: '*'"},
    {"toHtml(Link)", "link_text: '*'"},
    {"toHtml(Link)", "link_text: '*' url { scheme: FILE path: '*' }"},
    {"toHtml(Reference)", "type: PORT name: '*' url { scheme: FILE path: '*' }"},
    {"toHtml(Arg)", "string_val: '*'"},
    {"toHtml(Arg)", "scalar { int_val: -9223372036854775808 }"},
    {"toHtml(Arg)", "uri { link_text: '*' }"},
    {"toHtml(Arg)", "refs { ref { id: 2 } ref { name: '*' url { scheme: FILE path: '*' } } }"},
    {"toHtml(Arg)", "uris { uri { } uri { link_text: '*' } uri { url { scheme: HTTP } } }"},
};

tests::Call callOf(const Case& c) {
  std::string text;
  for (const char* next = c.text; *next != '\0'; ++next) {
    text.append(*next == '*' ? 700 : 1, *next == '*' ? 'x' : *next);
  }
  return tests::call(c.function, text);
}

// The text, or nothing if std::bad_alloc is thrown.
std::optional<std::string> render(const tests::Call& call) {
  try {
    return call.render();
  } catch (const std::bad_alloc&) {
    return std::nullopt;
  }
}

// Lets each allocation of a call fail in turn.
void failEachAllocation(const Case& c) {
  SCOPED_TRACE(std::string(c.function) + c.text);
  const auto call = callOf(c);
  const std::string text = call.render();
  const std::string before = tests::bytesOf(*call.message);
  std::size_t number = 0;
  for (bool failed = true; failed && !testing::Test::HasFailure(); ++number) {
    const auto outstanding = tests::outstandingAllocations();
    std::optional<std::string> result;
    {
      const FailingAllocation scope(number);
      result = render(call);
      failed = scope.failed();
    }
    EXPECT_EQ(result.has_value(), !failed) << "failure " << number;
    EXPECT_EQ(result.value_or(text), text);
    result.reset();
    EXPECT_TRUE(!failed || tests::outstandingAllocations() == outstanding);
    EXPECT_EQ(tests::bytesOf(*call.message), before);
    EXPECT_EQ(call.render(), text) << "after failure " << number;
  }
  EXPECT_TRUE(number > 1 || text.size() <= std::string().capacity());
}

struct Setting {
  const char* locale;
  int roundingMode;
};

const Setting settings[] = {
    {"C", FE_TONEAREST},     {"C", FE_UPWARD},         {"C", FE_DOWNWARD},
    {"comma", FE_TONEAREST}, {"comma", FE_TOWARDZERO}, {"two_bytes", FE_UPWARD},
};

TEST(Failures, OfAnyAllocationThrowBadAlloc) {
  for (const Case& c : others) {
    failEachAllocation(c);
  }
  for (const Setting& setting : settings) {
    const tests::ThreadLocale locale(setting.locale);
    const tests::RoundingMode mode(setting.roundingMode);
    for (const Case& c : doubles) {
      failEachAllocation(c);
    }
  }
}

// The C library may allocate while it formats a number, and fail. A locale's decimal point
// may be longer than MB_LEN_MAX, so that the buffer has no room for the text.
TEST(Failures, OfPrintfThrowBadAlloc) {
  constexpr int longest = 316 + MB_LEN_MAX;  // of -DBL_MAX
  for (const Setting& setting : settings) {
    const bool needsPrintf = setting.locale[0] != 'C' || setting.roundingMode != FE_TONEAREST;
    const tests::ThreadLocale locale(setting.locale);
    const tests::RoundingMode mode(setting.roundingMode);
    for (const Case& c : doubles) {
      const auto call = callOf(c);
      const std::string text = call.render();
      for (const int length : {-1, 1, longest, longest + 1, longest + 2, 1000000}) {
        printedLength = length;
        const auto result = render(call);
        printedLength.reset();
        if (!needsPrintf) {
          EXPECT_EQ(result, text) << c.text;
        } else if (length < 0 || length > longest) {
          EXPECT_EQ(result, std::nullopt) << c.text << length;
        } else {
          ASSERT_NE(result, std::nullopt) << c.text << length;
          const std::string zeros(static_cast<std::size_t>(length), '0');
          EXPECT_EQ(result->substr(0, zeros.size()), zeros) << c.text << length;
        }
        EXPECT_EQ(call.render(), text) << "after " << length;
      }
    }
  }
}

}  // namespace
