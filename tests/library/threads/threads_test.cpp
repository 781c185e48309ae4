// SPDX-License-Identifier: Apache-2.0

// The library in many threads at once: its first use, reading one message, and
// rendering while each thread changes its own locale and rounding mode.

#include <gmock/gmock.h>
#include <google/protobuf/arena.h>
#include <locale.h>
#include <vok/rulecheck/Converter.h>

#include <cfenv>
#include <stdexcept>
#include <string>

#include "run_at_once.h"
#include "support/messages.h"
#include "support/numeric_settings.h"
#include "support/use_library.h"

namespace {

using testing::IsEmpty;
using tests::RoundingMode;
using vok::rulecheck::Arg;
using vok::rulecheck::Converter;
using vok::rulecheck::SessionResult;

struct Use {
  const char* name;
  void (*use)();
};

const Use uses[] = {{"DefaultInstances", tests::useDefaultInstances},
                    {"Descriptors", tests::useDescriptors},
                    {"Reflection", tests::useReflection},
                    {"Parsing", tests::useParsing},
                    {"TextFormat", tests::useTextFormat},
                    {"Rendering", tests::useRendering}};

// Only the first case that a process runs is a first use: CTest runs them one by one.
class FirstUse : public testing::TestWithParam<Use> {};

TEST_P(FirstUse, NeedsNoSetUp) {
  EXPECT_THAT(tests::runAtOnce(32, [](int) { GetParam().use(); }), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Of, FirstUse, testing::ValuesIn(uses),
                         [](const auto& tested) { return tested.param.name; });

TEST(FirstUses, MayDifferInEachThread) {
  EXPECT_THAT(tests::runAtOnce(30, [](int i) { uses[i % 6].use(); }), IsEmpty());
}

void expectReadable(const SessionResult& result) {
  const auto readOften = [&result](int) {
    for (int i = 0; i < 20; ++i) {
      tests::read(result);
    }
  };
  EXPECT_THAT(tests::runAtOnce(16, readOften), IsEmpty());
}

TEST(Reading, OfAMessageThatWasBuilt) {
  expectReadable(tests::makeResult());
}

TEST(Reading, OfAMessageThatWasParsed) {
  SessionResult result;
  ASSERT_TRUE(result.ParseFromString(tests::makeResult().SerializeAsString()));
  expectReadable(result);
}

TEST(Reading, OfAMessageOnAnArena) {
  google::protobuf::Arena arena;
  SessionResult* result = SessionResult().New(&arena);
  *result = tests::makeResult();
  expectReadable(*result);
}

// The locale of the process stays as it is: POSIX allows setlocale() only while no
// other thread formats numbers.
// A locale that threads share. ThreadLocale would make one in each thread, under
// a lock of the C library's that ThreadSanitizer doesn't know.
class Locale {
 public:
  explicit Locale(const char* name) : locale_(newlocale(LC_NUMERIC_MASK, name, nullptr)) {
    if (locale_ == nullptr) {
      throw std::runtime_error(std::string("no locale ") + name);
    }
  }
  ~Locale() { freelocale(locale_); }
  Locale(const Locale&) = delete;
  Locale& operator=(const Locale&) = delete;

  void use() const { uselocale(locale_); }

 private:
  locale_t locale_;
};

struct Setting {
  const Locale& locale;
  int roundingMode;
  const char* text;
};

TEST(Rendering, FollowsTheSettingsOfEachThread) {
  const auto argument = tests::parse<Arg>("scalar { double_val: 0.0078125 }");
  const Locale comma("comma");
  const Locale point("point");
  const Locale twoBytes("two_bytes");
  const Setting settings[] = {
      {comma, FE_TONEAREST, "0,007812"},
      {point, FE_TONEAREST, "0.007812"},
      {comma, FE_UPWARD, "0,007813"},
      {point, FE_DOWNWARD, "0.007812"},
      {point, FE_UPWARD, "0.007813"},
      {twoBytes, FE_TOWARDZERO,
       "0\xd9\xab"
       "007812"},
  };
  const auto render = [&](int thread) {
    for (int i = thread; i < thread + 600; ++i) {
      const Setting& setting = settings[i % 6];
      setting.locale.use();
      const RoundingMode mode(setting.roundingMode);
      const std::string text = Converter::toHtml(argument);
      if (text != setting.text) {
        throw std::logic_error(text + " instead of " + setting.text);
      }
    }
    uselocale(LC_GLOBAL_LOCALE);
  };
  EXPECT_THAT(tests::runAtOnce(16, render), IsEmpty());
}

}  // namespace
