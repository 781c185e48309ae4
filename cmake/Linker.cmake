# SPDX-License-Identifier: Apache-2.0
# What the linker does with an option, seen in a shared library that it links:
# some linkers only warn, or do something else.

# vok_check_linker(VARIABLE PATTERN OPTION...): whether the linker accepts the
# options, and readelf's output for the library matches the pattern.
function(vok_check_linker variable pattern)
  if(DEFINED ${variable})
    return()
  endif()
  set(CMAKE_EXE_LINKER_FLAGS "${CMAKE_SHARED_LINKER_FLAGS}")
  set(library "${CMAKE_CURRENT_BINARY_DIR}/CMakeFiles/vok_linked.so")
  set(source [[
#include <stdlib.h>
#define EXPORTED extern "C" __attribute__((visibility("default")))
static void function() { abort(); }
EXPORTED int vok_datum;
EXPORTED int* vok_pointer;
EXPORTED void (*vok_function)();
int vok_datum = 1;
int* vok_pointer = &vok_datum;
void (*vok_function)() = function;
]])
  try_compile(linked
    SOURCE_FROM_VAR linked.cpp source
    COMPILE_DEFINITIONS -fPIC
    LINK_OPTIONS -shared ${ARGN}
    COPY_FILE "${library}")
  set(works OFF)
  if(linked)
    execute_process(COMMAND "${CMAKE_READELF}" -rdVW "${library}"
      OUTPUT_VARIABLE description COMMAND_ERROR_IS_FATAL ANY)
    if(description MATCHES "${pattern}")
      set(works ON)
    endif()
  endif()
  message(STATUS "${variable}: ${works}")
  set(${variable} ${works} CACHE BOOL "Link with ${ARGN}")
  mark_as_advanced(${variable})
endfunction()

# Whether the linker packs relocations, from 24 bytes each to little more than a
# bit, and makes the library require a loader that can read them. mold 1.10 does not
# do the latter: an older loader crashes, and a newer one rejects the library.
vok_check_linker(VOK_RULECHECK_PACKED_RELOCATIONS "\\(RELR\\).*GLIBC_ABI_DT_RELR"
  LINKER:-z,pack-relative-relocs)

# Whether a program's copies of the symbols on the list replace the library's.
# mold 1.10 binds the listed symbols to the library: a program with copies of
# default instances would see others than the library.
set(vok_list "${CMAKE_CURRENT_BINARY_DIR}/CMakeFiles/vok_datum.map")
file(WRITE "${vok_list}" "{ vok_datum; };\n")
vok_check_linker(VOK_RULECHECK_DYNAMIC_LIST "vok_datum" -Xlinker "--dynamic-list=${vok_list}")
