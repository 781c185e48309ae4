// SPDX-License-Identifier: Apache-2.0

// The C library's macros major and minor, defined before the library's headers, rename the
// accessors of Version. Programs call these as usual.

#include <sys/sysmacros.h>

#include <vok/rulecheck/Converter.h>

#if !defined(major) || !defined(minor)
#error the macros are not there
#endif

bool worksWithMacrosBefore() {
  vok::rulecheck::Version version;
  version.set_major(1);
  version.set_minor(4);
  return version.major() == 1 && version.minor() == 4 && major(makedev(8, 1)) == 8;
}
