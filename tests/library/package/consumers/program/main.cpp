// SPDX-License-Identifier: Apache-2.0

// An outside program: it links the library and uses all of it. C++11.

#include <vok/rulecheck/Converter.h>

#include <sys/sysmacros.h>  // defines macros major and minor

#include "support/use_library.h"

using namespace vok::rulecheck;

bool worksWithMacrosBefore();

// Parentheses around the name keep the preprocessor away from an accessor.
static bool worksWithMacrosAfter() {
  Version version;
  version.set_major(1);
  version.set_minor(4);
  return (version.major)() == 1 && (version.minor)() == 4 && major(makedev(8, 1)) == 8;
}

// Before C++17 that needs definitions in the library.
static bool constantsHaveAddresses() {
  const int* volatile size = &Resource::Scheme_ARRAYSIZE;  // not to be computed away
  const Resource::Scheme* volatile largest = &Resource::Scheme_MAX;
  const Request::RequestType* volatile type = &Request::STOP_SERVER;
  return *size == 7 && *largest == Resource_Scheme_MAILTO &&
         *type == Request_RequestType_STOP_SERVER;
}

// The exit status says what fails.
int main() {
  tests::useEverything();
  tests::read(tests::makeResult());
  return !constantsHaveAddresses()  ? 1
         : !worksWithMacrosBefore() ? 2
         : worksWithMacrosAfter()   ? 0
                                    : 3;
}
