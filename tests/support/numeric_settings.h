// SPDX-License-Identifier: Apache-2.0

// What the text of a number may depend on, for a scope: the numeric locale of
// the thread or of the process, and the rounding mode.
//
// The locales of the tests are "comma", "two_bytes" and "point", after their
// decimal point, which group digits, and "C".

#ifndef VOK_TESTS_SUPPORT_NUMERIC_SETTINGS_H_
#define VOK_TESTS_SUPPORT_NUMERIC_SETTINGS_H_

#include <locale.h>

namespace tests {

// Makes a locale the thread's own.
class ThreadLocale {
 public:
  explicit ThreadLocale(const char* name);
  ~ThreadLocale();
  ThreadLocale(const ThreadLocale&) = delete;
  ThreadLocale& operator=(const ThreadLocale&) = delete;

 private:
  locale_t previous_;
};

// Makes a locale that of the process, and C's afterwards.
class ProcessLocale {
 public:
  explicit ProcessLocale(const char* name);
  ~ProcessLocale();
  ProcessLocale(const ProcessLocale&) = delete;
  ProcessLocale& operator=(const ProcessLocale&) = delete;
};

// Sets one of the modes of <cfenv>, and rounds to nearest afterwards.
class RoundingMode {
 public:
  explicit RoundingMode(int mode);
  ~RoundingMode();
  RoundingMode(const RoundingMode&) = delete;
  RoundingMode& operator=(const RoundingMode&) = delete;
};

}  // namespace tests

#endif  // VOK_TESTS_SUPPORT_NUMERIC_SETTINGS_H_
