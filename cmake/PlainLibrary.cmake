# SPDX-License-Identifier: Apache-2.0
# The library that size and speed are compared with.

# vok_add_plain_library(): the target vok_rulecheck_plain, the library's sources
# built with CMake's default options. Call it in a folder below the root, where the
# root's source properties don't apply.
function(vok_add_plain_library)
  if(TARGET vok_rulecheck_plain)
    return()
  endif()
  add_library(vok_rulecheck_plain SHARED ${vok_rendering} ${vok_generated})
  set_source_files_properties(${vok_generated} TARGET_DIRECTORY vok_rulecheck_plain
    PROPERTIES COMPILE_OPTIONS "-std=gnu++${VOK_PROTOBUF_CXX_STANDARD}")
  add_dependencies(vok_rulecheck_plain vok_rulecheck)  # which generates the sources
  target_compile_features(vok_rulecheck_plain PRIVATE cxx_std_17)
  target_include_directories(vok_rulecheck_plain SYSTEM PUBLIC "${VOK_INCLUDE_DIR}")
  target_link_libraries(vok_rulecheck_plain PUBLIC protobuf::libprotobuf Threads::Threads)
endfunction()
