# SPDX-License-Identifier: Apache-2.0
# Hardening of compiled code, in every build type. Sets:
#
#   VOK_SANITIZED    whether the build has a sanitizer
#   vok_unoptimized  a generator expression, 1 in a build without optimization: type
#                    Debug or none, and no -O flag in CMAKE_CXX_FLAGS

include(CheckCXXCompilerFlag)
include(CheckCXXSourceCompiles)

option(VOK_RULECHECK_HARDENING "Harden compiled code (stack protector, fortify, control-flow protection)" ON)

string(FIND "${CMAKE_CXX_FLAGS}" "-fsanitize=" vok_sanitize_flag)
if(vok_sanitize_flag EQUAL -1)
  set(VOK_SANITIZED OFF)
else()
  set(VOK_SANITIZED ON)
endif()

# Not every architecture has these. Clang would accept and ignore them, with a warning.
foreach(option IN ITEMS -fstack-clash-protection -fcf-protection=full)
  string(MAKE_C_IDENTIFIER "VOK_HAS${option}" variable)
  check_cxx_compiler_flag(${option} ${variable})
  if(${variable})
    list(APPEND vok_hardening_of_architecture ${option})
  endif()
endforeach()

set(vok_unoptimized $<OR:$<CONFIG:Debug>,$<CONFIG:>>)
if(CMAKE_CXX_FLAGS MATCHES "-O[1-3sz]")
  set(vok_unoptimized 0)
endif()

# Packagers and some systems' compilers set a level of their own.
set(CMAKE_REQUIRED_FLAGS -O2)
check_cxx_source_compiles("
#ifndef _FORTIFY_SOURCE
#error Calls are not fortified.
#endif
int main() {}" VOK_FORTIFIED)
unset(CMAKE_REQUIRED_FLAGS)

# Sanitizers check what fortified calls check. Fortified calls need optimization, so
# debug builds get -Og.
function(vok_harden target)
  if(NOT VOK_RULECHECK_HARDENING)
    return()
  endif()
  target_compile_options(${target} PRIVATE
    -fstack-protector-strong ${vok_hardening_of_architecture})
  if(NOT VOK_SANITIZED)
    target_compile_options(${target} PRIVATE
      $<${vok_unoptimized}:-Og> $<$<NOT:$<BOOL:${VOK_FORTIFIED}>>:-D_FORTIFY_SOURCE=2>)
  endif()
endfunction()
