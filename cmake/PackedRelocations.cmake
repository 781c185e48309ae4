# VOK_PACKED_RELOCATIONS: whether relocations that only add the load address can
# be packed, from 24 bytes each to little more than a bit.
#
# That takes a linker that knows how (an older one warns, and goes on) and the C
# library's loader, from glibc 2.36 on. A packed library asks for that loader by
# the version GLIBC_ABI_DT_RELR, so an older one refuses it with a message.

include(CheckCXXSourceCompiles)

set(CMAKE_REQUIRED_LINK_OPTIONS LINKER:-z,pack-relative-relocs LINKER:--fatal-warnings)
check_cxx_source_compiles("
#include <features.h>
#if !__GLIBC_PREREQ(2, 36)
#error The loader is too old.
#endif
int main() {}" VOK_PACKED_RELOCATIONS)
unset(CMAKE_REQUIRED_LINK_OPTIONS)
