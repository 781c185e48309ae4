// SPDX-License-Identifier: Apache-2.0

// What the text of a number may depend on, for a scope: the numeric locale of
// the thread or of the process, and the rounding mode.
//
// The locales of the tests are "comma", "two_bytes" and "point", after their
// decimal point, which group digits, and "C".

#ifndef VOK_TESTS_SUPPORT_NUMERIC_SETTINGS_H_
#define VOK_TESTS_SUPPORT_NUMERIC_SETTINGS_H_

#include <locale.h>

#include <cfenv>

namespace tests {

class ThreadLocale {
 public:
  explicit ThreadLocale(const char* name);
  ~ThreadLocale() { uselocale(previous_); }

 private:
  locale_t previous_;
};

class ProcessLocale {
 public:
  explicit ProcessLocale(const char* name);
  ~ProcessLocale() { setlocale(LC_NUMERIC, "C"); }
};

// One of the modes of <cfenv>.
class RoundingMode {
 public:
  explicit RoundingMode(int mode) { std::fesetround(mode); }
  ~RoundingMode() { std::fesetround(FE_TONEAREST); }
};

}  // namespace tests

#endif  // VOK_TESTS_SUPPORT_NUMERIC_SETTINGS_H_
