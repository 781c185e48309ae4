// SPDX-License-Identifier: Apache-2.0

// An outside program: it links the library and uses all of it. C++11.

#include <vok/rulecheck/Converter.h>

#include <sys/sysmacros.h>  // defines macros major and minor

#include <algorithm>
#include <cstdio>

#include "support/use_library.h"

using namespace vok::rulecheck;

static int failures = 0;

#define CHECK(condition)                                       \
  do {                                                         \
    if (!(condition)) {                                        \
      std::printf("%d: not true: %s\n", __LINE__, #condition); \
      ++failures;                                              \
    }                                                          \
  } while (false)

bool worksWithMacrosBefore();

// Parentheses around the name keep the preprocessor away from an accessor.
static bool worksWithMacrosAfter() {
  Version version;
  version.set_major(1);
  version.set_minor(4);
  return (version.major)() == 1 && (version.minor)() == 4 && major(makedev(8, 1)) == 8;
}

// Constants by reference and by address: before C++17 that needs a definition in the
// library.
template <typename Enum>
static int sumOf(const Enum& min, const Enum& max, const int& arraySize) {
  const int* volatile address = &arraySize;  // not to be computed away
  return static_cast<int>(std::min(min, max)) + static_cast<int>(std::max(min, max)) + *address;
}

static void checkConstants() {
  CHECK(sumOf(Resource::Scheme_MIN, Resource::Scheme_MAX, Resource::Scheme_ARRAYSIZE) == 13);
  CHECK(sumOf(Reference::RefType_MIN, Reference::RefType_MAX, Reference::RefType_ARRAYSIZE) == 57);
  CHECK(sumOf(Violation::Severity_MIN, Violation::Severity_MAX, Violation::Severity_ARRAYSIZE) ==
        11);
  CHECK(sumOf(RuleSpec::Disposition_MIN, RuleSpec::Disposition_MAX,
              RuleSpec::Disposition_ARRAYSIZE) == 13);
  CHECK(sumOf(Request::RequestType_MIN, Request::RequestType_MAX, Request::RequestType_ARRAYSIZE) ==
        32);
  CHECK(sumOf(Response::ResponseType_MIN, Response::ResponseType_MAX,
              Response::ResponseType_ARRAYSIZE) == 13);
  const Resource::Scheme* volatile scheme = &Resource::FILE;
  const Request::RequestType* volatile type = &Request::STOP_SERVER;
  CHECK(*scheme == Resource_Scheme_FILE && *type == Request_RequestType_STOP_SERVER);
}

int main() {
  tests::useEverything();
  tests::read(tests::makeResult());
  checkConstants();
  CHECK(worksWithMacrosBefore() && worksWithMacrosAfter());
  return failures == 0 ? 0 : 1;
}
