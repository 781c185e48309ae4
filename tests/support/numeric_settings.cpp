#include "support/numeric_settings.h"

#include <stdlib.h>

#include <cfenv>
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

[[noreturn]] void failOn(const char* name) {
  throw std::runtime_error("no locale " + std::string(name) +
                           (localePathSet == 0 ? "" : ", as LOCPATH cannot be set"));
}

}  // namespace

ThreadLocale::ThreadLocale(const char* name) : locale_(newlocale(LC_NUMERIC_MASK, name, nullptr)) {
  if (locale_ == nullptr) {
    failOn(name);
  }
  previous_ = uselocale(locale_);
}

ThreadLocale::~ThreadLocale() {
  uselocale(previous_);
  freelocale(locale_);
}

ProcessLocale::ProcessLocale(const char* name) {
  if (setlocale(LC_NUMERIC, name) == nullptr) {
    failOn(name);
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
