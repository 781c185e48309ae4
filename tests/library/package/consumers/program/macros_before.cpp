// The C library's macros major and minor, defined before our headers: they take
// part in naming the accessors of Version, which are called as usual.

#include <sys/sysmacros.h>

#include <vok/rulecheck/Converter.h>

#include "check.h"

#if !defined(major) || !defined(minor)
#error the macros are not there
#endif

void checkMacrosIncludedBefore() {
  vok::rulecheck::Version version;
  version.set_major(1);
  version.set_minor(4);
  version.set_patch(0);
  CHECK(version.major() == 1 && version.minor() == 4 && version.IsInitialized());
  CHECK(major(makedev(8, 1)) == 8);
}
