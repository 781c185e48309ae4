# Hardening of compiled code, in every build type.

include(CheckCXXCompilerFlag)

option(VOK_RULECHECK_HARDENING "Harden compiled code (stack protector, fortify, control-flow protection)" ON)

string(FIND "${CMAKE_CXX_FLAGS}" "-fsanitize=" vok_sanitize_flag)
if(vok_sanitize_flag EQUAL -1)
  set(VOK_SANITIZED OFF)
else()
  set(VOK_SANITIZED ON)
endif()

# Not every architecture has these. Clang takes an option that it ignores, and warns.
foreach(option IN ITEMS -fstack-clash-protection -fcf-protection=full)
  string(MAKE_C_IDENTIFIER "VOK_HAS${option}" variable)
  check_cxx_compiler_flag(${option} ${variable})
  if(${variable})
    list(APPEND vok_hardening_of_architecture ${option})
  endif()
endforeach()

# A sanitizer brings checks of its own for what fortified calls check. Fortified
# calls need optimisation, so a Debug build gets as much of it as leaves
# debugging undisturbed.
function(vok_harden target)
  if(NOT VOK_RULECHECK_HARDENING)
    return()
  endif()
  target_compile_options(${target} PRIVATE
    -fstack-protector-strong ${vok_hardening_of_architecture})
  if(NOT VOK_SANITIZED)
    target_compile_options(${target} PRIVATE
      $<$<CONFIG:Debug>:-Og> -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
  endif()
endfunction()
