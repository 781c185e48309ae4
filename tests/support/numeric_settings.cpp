// SPDX-License-Identifier: Apache-2.0

#include "support/numeric_settings.h"

#include <stdlib.h>

#include <cfenv>
#include <map>
#include <stdexcept>
#include <string>

// Asked by the leak checker of the sanitizers: glibc's newlocale() never frees
// the list of folders that it makes of LOCPATH.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
  return "leak:argz_add_sep";
}

namespace tests {
namespace {

// Where the C library looks for locales; set before any thread starts.
const int localePathSet = setenv("LOCPATH", LOCALE_DIR, 1);

// The locales of the tests. They are made once, since it takes long.
class Locales {
 public:
  Locales() {
    for (const char* name : {"C", "comma", "two_bytes", "point"}) {
      const locale_t locale = newlocale(LC_NUMERIC_MASK, name, nullptr);
      if (localePathSet != 0 || locale == nullptr) {
        throw std::runtime_error(std::string("no locale ") + name);
      }
      locales_[name] = locale;
    }
  }
  ~Locales() {
    for (const auto& entry : locales_) {
      freelocale(entry.second);
    }
  }
  Locales(const Locales&) = delete;
  Locales& operator=(const Locales&) = delete;

  locale_t at(const char* name) const { return locales_.at(name); }

 private:
  std::map<std::string, locale_t> locales_;
};

locale_t localeOf(const char* name) {
  static const Locales locales;
  return locales.at(name);
}

}  // namespace

ThreadLocale::ThreadLocale(const char* name) : previous_(uselocale(localeOf(name))) {}

ThreadLocale::~ThreadLocale() {
  uselocale(previous_);
}

ProcessLocale::ProcessLocale(const char* name) {
  if (setlocale(LC_NUMERIC, name) == nullptr) {
    throw std::runtime_error(std::string("no locale ") + name);
  }
}

ProcessLocale::~ProcessLocale() {
  setlocale(LC_NUMERIC, "C");
}

RoundingMode::RoundingMode(int mode) {
  std::fesetround(mode);
}

RoundingMode::~RoundingMode() {
  std::fesetround(FE_TONEAREST);
}

}  // namespace tests
