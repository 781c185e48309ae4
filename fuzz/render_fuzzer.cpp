// SPDX-License-Identifier: Apache-2.0

// The input is settings in a byte, and an Arg in text format, which contains each kind of value
// that can be rendered. Bits 0 and 1 of the settings select the locale, bits 2 and 3 the rounding
// mode.

#include <cfenv>
#include <string>

#include "fuzz.h"
#include "support/messages.h"
#include "support/numeric_settings.h"
#include "support/rendering_model.h"

void fuzz::run(const std::string& input) {
  const char* const locales[] = {"C", "comma", "two_bytes", "point"};
  const int modes[] = {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO};
  vok::rulecheck::Arg arg;
  if (input.empty() || !fuzz::read(input.substr(1), &arg)) {
    return;
  }
  const std::string before = tests::bytesOf(arg);
  {
    const tests::ThreadLocale locale(locales[input[0] & 3]);
    const tests::RoundingMode rounding(modes[input[0] >> 2 & 3]);
    tests::expectAsInModel(arg, [](auto render) { return render(); });
    EXPECT_EQ(std::fegetround(), modes[input[0] >> 2 & 3]);
  }
  EXPECT_EQ(tests::bytesOf(arg), before);
}
