// The C library's macros major and minor, defined after our headers: parentheses
// around the name keep the preprocessor away from an accessor.

#include <vok/rulecheck/Converter.h>

#include <sys/sysmacros.h>

#include "check.h"

#if !defined(major) || !defined(minor)
#error the macros are not there
#endif

void checkMacrosIncludedAfter() {
  vok::rulecheck::Version version;
  version.set_major(1);
  version.set_minor(4);
  version.set_patch(0);
  CHECK((version.major)() == 1 && (version.minor)() == 4 && version.IsInitialized());
  CHECK(major(makedev(8, 1)) == 8);
}
