// One message, rendered by many threads at once, each of which keeps changing its
// own locale (uselocale) and rounding mode. The locale of the process stays as it
// is: POSIX allows setlocale() only while no other thread formats numbers.

#include <gmock/gmock.h>
#include <locale.h>
#include <vok/rulecheck/Converter.h>

#include <cfenv>
#include <stdexcept>
#include <string>

#include "run_at_once.h"
#include "support/messages.h"
#include "support/numeric_settings.h"

namespace {

using testing::IsEmpty;
using tests::RoundingMode;
using vok::rulecheck::Arg;
using vok::rulecheck::Converter;

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
