// SPDX-License-Identifier: Apache-2.0

// The library in many threads at once: its first use, one message that all read, and
// rendering while each thread changes its own locale and rounding mode.

#include <gmock/gmock.h>
#include <google/protobuf/arena.h>
#include <vok/rulecheck/Converter.h>

#include <cfenv>
#include <stdexcept>
#include <string>
#include <vector>

#include "run_at_once.h"
#include "support/messages.h"
#include "support/numeric_settings.h"
#include "support/use_library.h"

namespace {

using testing::IsEmpty;
using vok::rulecheck::Arg;
using vok::rulecheck::Converter;
using vok::rulecheck::SessionResult;

struct Use {
  const char* name;
  void (*use)();
};

const Use uses[] = {{"DefaultInstances", tests::useDefaultInstances},
                    {"Descriptors", tests::useDescriptors},
                    {"Parsing", tests::useParsing},
                    {"TextFormat", tests::useTextFormat},
                    {"Rendering", tests::useRendering},
                    {"All", tests::useEverything}};

// Only the first case that a process runs is a first use: CTest runs them one by one.
class FirstUse : public testing::TestWithParam<Use> {};

TEST_P(FirstUse, NeedsNoSetUp) {
  EXPECT_THAT(tests::runAtOnce(32, [](int) { GetParam().use(); }), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Of, FirstUse, testing::ValuesIn(uses),
                         [](const auto& tested) { return tested.param.name; });

TEST(Reading, OneMessageNeedsNoLock) {
  const SessionResult built = tests::makeResult();
  SessionResult parsed;
  ASSERT_TRUE(parsed.ParseFromString(built.SerializeAsString()));
  google::protobuf::Arena arena;
  SessionResult* onArena = built.New(&arena);
  *onArena = built;
  for (const SessionResult* result : std::vector<const SessionResult*>{&built, &parsed, onArena}) {
    const auto readOften = [result](int) {
      for (int i = 0; i < 20; ++i) {
        tests::read(*result);
      }
    };
    EXPECT_THAT(tests::runAtOnce(16, readOften), IsEmpty());
  }
}

// The locale of the process stays as it is: POSIX allows setlocale() only while no
// other thread formats numbers.
TEST(Rendering, FollowsTheSettingsOfEachThread) {
  struct Setting {
    const char* locale;
    int roundingMode;
    const char* text;
  };
  const Setting settings[] = {
      {"comma", FE_TONEAREST, "0,007812"}, {"point", FE_TONEAREST, "0.007812"},
      {"comma", FE_UPWARD, "0,007813"},    {"point", FE_DOWNWARD, "0.007812"},
      {"point", FE_UPWARD, "0.007813"},    {"two_bytes", FE_TOWARDZERO, "0\u066b007812"},
  };
  const auto argument = tests::parse<Arg>("scalar { double_val: 0.0078125 }");
  const auto render = [&](int thread) {
    for (int i = thread; i < thread + 600; ++i) {
      const Setting& setting = settings[i % 6];
      const tests::ThreadLocale locale(setting.locale);
      const tests::RoundingMode mode(setting.roundingMode);
      const std::string text = Converter::toHtml(argument);
      if (text != setting.text) {
        throw std::logic_error(text + " instead of " + setting.text);
      }
    }
  };
  EXPECT_THAT(tests::runAtOnce(16, render), IsEmpty());
}

}  // namespace
