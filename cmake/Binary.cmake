# SPDX-License-Identifier: Apache-2.0
# How vok_rulecheck is compiled and linked: what it exports, what loading it costs, how
# it is hardened. Each option's comment says what happens without it.
# tests/library/binary checks the result. Sets, for other targets of the same sources:
#
#   vok_generated_options  what the generated source is compiled with
#   vok_exports            the version script of the shared object

include(cmake/Hardening.cmake)
include(cmake/Linker.cmake)
include(cmake/Warnings.cmake)

# --- Compiling

# Each source that includes <iostream>, as the runtime's headers do, gets an
# initializer that sets up std::cout. The sources need only the stream types, so
# include these and define the include guard of <iostream>.
set(vok_no_iostream -include istream -D_GLIBCXX_IOSTREAM)

# -w: generated code does not compile under every warning that a host may turn
# into an error. -O3 makes it a tenth larger and no faster.
set(vok_generated_options
  -w "-std=gnu++${VOK_PROTOBUF_CXX_STANDARD}" ${vok_no_iostream} $<$<CONFIG:Release>:-O2>)

if(VOK_PROTOBUF_MAP_SEEDS)
  list(APPEND vok_generated_options -include "${PROJECT_SOURCE_DIR}/cmake/map_seeds.h")
endif()

# The library has one initializer, which registers the schema, and no finalizer.
# GCC would also register the destructors of the default instances with
# __cxa_atexit. With -fno-use-cxa-atexit it emits a finalizer for them, which the
# optimizer finds to be empty and removes: hence -O1 where a build has less. Clang
# and g++ 11 emit an empty second initializer if the first has a priority, which
# a single initializer does not need.
# Aligned loops and jumps only make the code larger.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  list(APPEND vok_generated_options -fno-use-cxa-atexit -falign-loops=1 -falign-jumps=1)
  if(NOT VOK_SANITIZED)
    list(APPEND vok_generated_options $<${vok_unoptimized}:-O1>)
  endif()
endif()
if(BUILD_SHARED_LIBS AND (NOT CMAKE_CXX_COMPILER_ID STREQUAL "GNU" OR CMAKE_CXX_COMPILER_VERSION VERSION_LESS 12))
  list(APPEND vok_generated_options "-Dinit_priority(priority)=unused")
endif()

# Without NDEBUG the generated code logs strings that are not UTF-8.
set_source_files_properties(${vok_generated} PROPERTIES
  COMPILE_OPTIONS "${vok_generated_options}"
  COMPILE_DEFINITIONS NDEBUG)

# GCC assumes that snprintf never fails, and drops the code that handles that. In
# another project, its warnings don't apply.
set_source_files_properties(${vok_rendering} PROPERTIES
  COMPILE_OPTIONS
    "$<IF:$<BOOL:${PROJECT_IS_TOP_LEVEL}>,${VOK_WARNINGS},-w>;${vok_no_iostream};$<$<CXX_COMPILER_ID:GNU>:-fno-printf-return-value>")

# Without -fno-semantic-interposition exported functions are not inlined; without
# -fno-plt each call of another library's function takes an additional jump. In a
# host that is compiled with -fvisibility=hidden the library would export nothing.
target_compile_options(vok_rulecheck PRIVATE
  -fno-semantic-interposition -fno-plt -fvisibility=default)
set_target_properties(vok_rulecheck PROPERTIES
  POSITION_INDEPENDENT_CODE ON
  VISIBILITY_INLINES_HIDDEN ON)
vok_harden(vok_rulecheck)

# --- Linking

# A C++17 program has definitions of its own of the classes' constants, such as
# Resource::Scheme_MAX. GCC emits them as unique symbols, which clash with those
# of a static library unless these are weak. objcopy changes no object that waits
# for link-time optimization, so there is none in a static library.
if(NOT BUILD_SHARED_LIBS)
  set_target_properties(vok_rulecheck PROPERTIES INTERPROCEDURAL_OPTIMIZATION OFF)
  target_compile_options(vok_rulecheck PRIVATE -fno-lto)
  add_custom_command(TARGET vok_rulecheck POST_BUILD
    COMMAND "${CMAKE_OBJCOPY}" --wildcard "--weaken-symbol=_ZN3vok9rulecheck*E"
      "$<TARGET_FILE:vok_rulecheck>"
    VERBATIM)
  return()
endif()

set(vok_exports "${PROJECT_BINARY_DIR}/exports.map")
set(vok_interposable "${PROJECT_BINARY_DIR}/interposable.map")
configure_file(cmake/exports.map "${vok_exports}" COPYONLY)
configure_file(cmake/interposable.map.in "${vok_interposable}" @ONLY)
set_target_properties(vok_rulecheck PROPERTIES LINK_DEPENDS "${vok_exports};${vok_interposable}")
# CMake garbles a dollar sign in linker options, so the paths are relative to the build
# folder, in which Ninja links.
if(CMAKE_GENERATOR MATCHES Ninja)
  cmake_path(RELATIVE_PATH vok_exports BASE_DIRECTORY "${CMAKE_BINARY_DIR}")
  cmake_path(RELATIVE_PATH vok_interposable BASE_DIRECTORY "${CMAKE_BINARY_DIR}")
endif()

# nodelete: the runtime keeps pointers into the library. Unmapped, it would leave
# them dangling; loaded again, it would register the schema twice, which aborts.
# LINKER: would split a path at its commas.
target_link_options(vok_rulecheck PRIVATE
  "SHELL:-Xlinker \"--version-script=${vok_exports}\""
  "$<$<BOOL:${VOK_RULECHECK_DYNAMIC_LIST}>:SHELL:-Xlinker \"--dynamic-list=${vok_interposable}\">"
  $<$<BOOL:${VOK_RULECHECK_PACKED_RELOCATIONS}>:LINKER:-z,pack-relative-relocs> LINKER:--gc-sections
  LINKER:-z,nodelete LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack LINKER:-z,text)
if(NOT VOK_SANITIZED)  # a sanitizer's runtime is the executable's
  target_link_options(vok_rulecheck PRIVATE LINKER:-z,defs)
endif()
