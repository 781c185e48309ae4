// SPDX-License-Identifier: Apache-2.0

#include "support/numeric_settings.h"

#include <stdlib.h>

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

// Created once, which takes long, and never freed: threads may use them until the end.
locale_t localeOf(const char* name) {
  static const auto& locales = *[] {
    auto* created = new std::map<std::string, locale_t>;
    for (const char* each : {"C", "comma", "two_bytes", "point"}) {
      (*created)[each] = newlocale(LC_NUMERIC_MASK, each, nullptr);
    }
    return created;
  }();
  const locale_t locale = locales.at(name);
  if (localePathSet != 0 || locale == nullptr) {
    throw std::runtime_error(std::string("no locale ") + name);
  }
  return locale;
}

}  // namespace

ThreadLocale::ThreadLocale(const char* name) : previous_(uselocale(localeOf(name))) {}

ProcessLocale::ProcessLocale(const char* name) {
  if (setlocale(LC_NUMERIC, name) == nullptr) {
    throw std::runtime_error(std::string("no locale ") + name);
  }
}

}  // namespace tests
