// SPDX-License-Identifier: Apache-2.0

// Failures of the C and C++ libraries while a text is made: std::bad_alloc comes
// out, never a text that is cut, and nothing is leaked or changed.

#include <gtest/gtest.h>
#include <vok/rulecheck/Converter.h>

#include <cerrno>
#include <cfenv>
#include <climits>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "support/allocations.h"
#include "support/messages.h"
#include "support/numeric_settings.h"

namespace {

constexpr int never = -1;

int beforeFailure = never;
bool printfFailed = false;
int longWidth = 0;

int printWide(char* text, std::size_t size, const char* format, ...) {
  std::va_list values;
  va_start(values, format);
  const int length = std::vsnprintf(text, size, format, values);
  va_end(values);
  return length;
}

int print(char* text, std::size_t size, const char* format, std::va_list values) {
  if (longWidth > 0) {
    return printWide(text, size, "%0*d", longWidth, 0);
  }
  if (beforeFailure == 0) {
    beforeFailure = never;
    printfFailed = true;
    errno = ENOMEM;
    return -1;
  }
  if (beforeFailure > 0) {
    --beforeFailure;
  }
  return std::vsnprintf(text, size, format, values);
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

// Makes one call of snprintf in a scope fail for lack of memory: the first one if
// number is 0.
class FailingPrintf {
 public:
  explicit FailingPrintf(int number) {
    printfFailed = false;
    beforeFailure = number;
  }
  ~FailingPrintf() { beforeFailure = never; }
  FailingPrintf(const FailingPrintf&) = delete;
  FailingPrintf& operator=(const FailingPrintf&) = delete;

  // Whether there was a call of that number.
  bool failed() const { return printfFailed; }
};

// In a scope, each call of snprintf gives a text of that many zeros, cut off where its
// buffer ends, as with a locale whose decimal point is very long.
class LongPrintf {
 public:
  explicit LongPrintf(int width) { longWidth = width; }
  ~LongPrintf() { longWidth = 0; }
  LongPrintf(const LongPrintf&) = delete;
  LongPrintf& operator=(const LongPrintf&) = delete;
};

struct Call {
  std::string name;
  std::shared_ptr<const google::protobuf::Message> message;  // null for a number
  std::function<std::string()> render;
};

// The text, with each asterisk replaced by 700 letters.
std::string lengthened(const std::string& text) {
  std::string longer;
  for (const char c : text) {
    longer.append(c == '*' ? 700 : 1, c == '*' ? 'x' : c);
  }
  return longer;
}

template <typename Enum>
Call callOn(std::string (*function)(Enum), Enum number) {
  return {"a number " + std::to_string(static_cast<int>(number)), nullptr,
          [=] { return function(number); }};
}

template <typename Message>
Call callOn(std::string (*function)(const Message&), const std::string& text) {
  const auto message = std::make_shared<const Message>(tests::parse<Message>(lengthened(text)));
  return {std::string(Message::descriptor()->name()) + " { " + text + " }", message,
          [=] { return function(*message); }};
}

Call anchor(const std::string& text, const std::string& anchorText) {
  const auto resource = std::make_shared<const Resource>(tests::parse<Resource>(lengthened(text)));
  const std::string content = lengthened(anchorText);
  return {"an anchor of { " + text + " } around " + anchorText, resource,
          [=] { return Converter::toHtml(*resource, content); }};
}

void append(std::vector<Call> more, std::vector<Call>* calls) {
  calls->insert(calls->end(), more.begin(), more.end());
}

std::vector<Call> callsWithNumbers() {
  return {
      callOn<Resource_Scheme>(Converter::toString, Resource::FILE),
      callOn<Reference_RefType>(Converter::toString, Reference::DATAMOVER),
      callOn<Violation_Severity>(Converter::toString, Violation::SEV_CRITICAL_WARNING),
  };
}

std::vector<Call> callsForText() {
  return {
      callOn<Scalar>(Converter::toString, ""),
      callOn<Scalar>(Converter::toString, "string_val: 'short' units: 'ns'"),
      callOn<Scalar>(Converter::toString, "string_val: '*' units: '*'"),
      callOn<Scalar>(Converter::toString, "int_val: -9223372036854775808 units: 'ns'"),
      callOn<Scalar>(Converter::toString, "address: '*'"),
      callOn<Reference>(Converter::toString, "type: PORT name: '*'"),
      callOn<Reference>(Converter::toString, "type: DATAMOVER id: -2147483648"),
      callOn<Reference>(Converter::toString, "type: DATAMOVER uuid: '*'"),
      callOn<Resource>(Converter::href, "scheme: FILE path: 'a'"),
      callOn<Resource>(Converter::href,
                       "scheme: HTTPS host: 'h' port: -2147483648 path: 'p' query: 'q' "
                       "fragment: 'f'"),
      callOn<Resource>(Converter::href,
                       "scheme: HTTPS host: '*' port: 1 path: '*' query: '*' fragment: '*'"),
      callOn<Resource>(Converter::href, "scheme: DATA media_type: '*' encoding: '*' data: '*'"),
  };
}

std::vector<Call> callsForHtml() {
  return {
      anchor("scheme: FILE path: '/a'", "A"),
      anchor("scheme: HTTP host: '*' path: '*'", "*"),
      anchor("scheme: DATA media_type: 'text/html' data: '*'", "dropped"),
      callOn<Link>(Converter::toHtml, ""),
      callOn<Link>(Converter::toHtml, "link_text: '*'"),
      callOn<Link>(Converter::toHtml, "link_text: '*' url { scheme: FILE path: '*' }"),
      callOn<Link>(Converter::toHtml, "url { scheme: DATA media_type: '*' data: '*' }"),
      callOn<Reference>(Converter::toHtml, "type: KERNEL id: 4"),
      callOn<Reference>(Converter::toHtml,
                        "type: PORT name: '*' url { scheme: FILE path: '*' fragment: 'L7' }"),
      callOn<Arg>(Converter::toHtml, "string_val: '*'"),
      callOn<Arg>(Converter::toHtml, "scalar { int_val: -9223372036854775808 }"),
      callOn<Arg>(Converter::toHtml, "uri { link_text: '*' url { scheme: FILE path: '/a' } }"),
      callOn<Arg>(Converter::toHtml,
                  "refs { ref { type: PORT name: 'a' } ref { type: LOOP id: 2 } ref { name: '*' } "
                  "ref { type: PORT name: '*' url { scheme: FILE path: '*' } } }"),
      callOn<Arg>(Converter::toHtml,
                  "uris { uri { } uri { link_text: '*' } uri { url { scheme: HTTP host: '*' } } }"),
  };
}

std::vector<Call> callsWithDoubles() {
  return {
      callOn<Scalar>(Converter::toString, "double_val: 0.5"),
      callOn<Scalar>(Converter::toString, "double_val: -1234567.5 units: 'MHz'"),
      callOn<Scalar>(Converter::toString, "double_val: -1.7976931348623157e308 units: '*'"),
      callOn<Arg>(Converter::toHtml, "scalar { double_val: 0.5 }"),
      callOn<Arg>(Converter::toHtml, "scalar { double_val: -1.7976931348623157e308 }"),
  };
}

std::vector<Call> callsOfEveryFunction() {
  std::vector<Call> calls = callsWithNumbers();
  append(callsForText(), &calls);
  append(callsForHtml(), &calls);
  append(callsWithDoubles(), &calls);
  return calls;
}

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
    for (const Call& call : callsOfEveryFunction()) {
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
    for (const Call& call : callsWithDoubles()) {
      EXPECT_EQ(failEach<FailingPrintf>(call) > 0, needsPrintf) << call.name;
    }
  }
}

// The longest text that has room is that of -DBL_MAX with a decimal point of
// MB_LEN_MAX bytes.
TEST(Failures, OfALocaleWhoseDecimalPointIsTooLong) {
  constexpr int longest = 316 + MB_LEN_MAX;
  const tests::RoundingMode mode(FE_UPWARD);
  const auto scalar = tests::parse<Scalar>("double_val: 1.5");
  const Call call = {"", nullptr, [&] { return Converter::toString(scalar); }};
  for (const int width : {1, 317, longest, longest + 1, longest + 2, longest + 44, 1000000}) {
    const LongPrintf scope(width);
    const auto text = width > longest
                          ? std::nullopt
                          : std::optional(std::string(static_cast<std::size_t>(width), '0'));
    EXPECT_EQ(render(call), text) << width;
  }
}

}  // namespace
