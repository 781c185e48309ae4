# SPDX-License-Identifier: Apache-2.0
# Finds Protocol Buffers, runtime and compiler, and lists how its releases differ, for
# the build and, once installed, for the package configuration. 3.3.0, 3.12.4, 3.21.12
# and 36.2 have been tried; no others near the boundaries at 3.4, 3.6 and 22.0.
#
# The rest is looked for where the runtime's headers are, so that CMAKE_PREFIX_PATH
# alone selects a release. A release that has a CMake package is used through that, any
# other through CMake's FindProtobuf.
#
# Sets:
#   VOK_PROTOBUF_ERROR         empty, or one sentence that says what is wrong
#   VOK_PROTOBUF_VERSION       the headers' number, such as 3021012
#   VOK_PROTOBUF_RELEASE       what protoc calls that release: 3.21.12, 36.2
#   VOK_PROTOBUF_ABI           releases with the same text share one ABI
#   VOK_PROTOBUF_CXX_STANDARD  the C++ standard for generated source
#   VOK_PROTOBUF_SHARED_DATA   the end of the mangled names of the variables that
#                              generated headers use
#   VOK_PROTOBUF_MAP_SEEDS     whether the seeds of maps need cmake/map_seeds.h

set(VOK_PROTOBUF_ERROR "")

find_path(Protobuf_INCLUDE_DIR google/protobuf/stubs/common.h)
mark_as_advanced(Protobuf_INCLUDE_DIR)
if(Protobuf_INCLUDE_DIR AND NOT TARGET protobuf::libprotobuf)
  cmake_path(GET Protobuf_INCLUDE_DIR PARENT_PATH vok_protobuf_prefix)
  find_package(Protobuf QUIET CONFIG PATHS "${vok_protobuf_prefix}" NO_DEFAULT_PATH)
  if(NOT Protobuf_FOUND)
    find_package(Protobuf QUIET MODULE)
  endif()
endif()

if(NOT TARGET protobuf::libprotobuf)
  set(VOK_PROTOBUF_ERROR
      "Protocol Buffers was not found: install its development package or name its prefix in CMAKE_PREFIX_PATH.")
  return()
endif()

# The number in the headers is the one that generated code is checked against.
# A package in the compiler's own search path may leave its include folder out.
get_target_property(vok_protobuf_includes protobuf::libprotobuf INTERFACE_INCLUDE_DIRECTORIES)
find_file(vok_protobuf_header google/protobuf/stubs/common.h
  PATHS ${vok_protobuf_includes} "${Protobuf_INCLUDE_DIR}" NO_DEFAULT_PATH NO_CACHE)
set(VOK_PROTOBUF_VERSION 0)
if(vok_protobuf_header)
  file(STRINGS "${vok_protobuf_header}" vok_protobuf_define
    REGEX "^#define GOOGLE_PROTOBUF_VERSION [0-9]+")
  if(vok_protobuf_define MATCHES "([0-9]+)")
    set(VOK_PROTOBUF_VERSION "${CMAKE_MATCH_1}")
  endif()
endif()

math(EXPR vok_protobuf_major "${VOK_PROTOBUF_VERSION} / 1000000")
math(EXPR vok_protobuf_minor "${VOK_PROTOBUF_VERSION} / 1000 % 1000")
math(EXPR vok_protobuf_patch "${VOK_PROTOBUF_VERSION} % 1000")

# Up to 3.21 a minor release keeps its soname and its generated code's checks;
# from 22.0 (4.22.0 in the headers) on, generated code accepts its own release
# only, and release names leave out the major number.
if(VOK_PROTOBUF_VERSION LESS 4022000)
  set(VOK_PROTOBUF_RELEASE "${vok_protobuf_major}.${vok_protobuf_minor}.${vok_protobuf_patch}")
  set(VOK_PROTOBUF_ABI "${vok_protobuf_major}.${vok_protobuf_minor}")
else()
  set(VOK_PROTOBUF_RELEASE "${vok_protobuf_minor}.${vok_protobuf_patch}")
  set(VOK_PROTOBUF_ABI "${VOK_PROTOBUF_RELEASE}")
endif()

# Before 3.6 headers still accept C++98 and, compiled as anything later, open a
# random device for every map that is constructed. From then to 3.21 C++14 is
# right: compiled as C++17, generated source lacks the out-of-line definitions
# of constants such as Resource::Scheme_MAX, which C++11 users need. Later
# releases demand C++17.
if(VOK_PROTOBUF_VERSION LESS 3006000)
  set(VOK_PROTOBUF_CXX_STANDARD 98)
elseif(VOK_PROTOBUF_VERSION LESS 4022000)
  set(VOK_PROTOBUF_CXX_STANDARD 14)
else()
  set(VOK_PROTOBUF_CXX_STANDARD 17)
endif()

# Up to 3.21 these are the default instances. Later releases use more variables, with
# other names; those that belong to generated code all end in an underscore.
if(VOK_PROTOBUF_VERSION LESS 4022000)
  set(VOK_PROTOBUF_SHARED_DATA "_default_instance_E")
else()
  set(VOK_PROTOBUF_SHARED_DATA "_E")
endif()

# Before 3.4 a map's bucket for a key depends on NDEBUG.
set(VOK_PROTOBUF_MAP_SEEDS OFF)
if(VOK_PROTOBUF_VERSION LESS 3004000)
  set(VOK_PROTOBUF_MAP_SEEDS ON)
endif()

if(VOK_PROTOBUF_VERSION LESS 3003000)
  set(VOK_PROTOBUF_ERROR
      "Protocol Buffers ${VOK_PROTOBUF_RELEASE} is too old: release 3.3.0 or later is needed.")
endif()
