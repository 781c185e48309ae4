# Hardening of compiled code, in every build type.

option(VOK_RULECHECK_HARDENING "Harden compiled code (stack protector, fortify, control-flow protection)" ON)

string(FIND "${CMAKE_CXX_FLAGS}" "-fsanitize=" vok_sanitize_flag)
if(vok_sanitize_flag EQUAL -1)
  set(VOK_SANITIZED OFF)
else()
  set(VOK_SANITIZED ON)
endif()

# A sanitizer brings checks of its own for what fortified calls check. Fortified
# calls need optimisation, so a Debug build gets as much of it as leaves
# debugging undisturbed.
function(vok_harden target)
  if(NOT VOK_RULECHECK_HARDENING)
    return()
  endif()
  target_compile_options(${target} PRIVATE
    -fstack-protector-strong -fstack-clash-protection -fcf-protection=full)
  if(NOT VOK_SANITIZED)
    target_compile_options(${target} PRIVATE
      $<$<CONFIG:Debug>:-Og> -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
  endif()
endfunction()
