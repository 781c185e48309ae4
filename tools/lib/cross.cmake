# SPDX-License-Identifier: Apache-2.0
# The toolchain of tools/matrix for the Debian architecture VOK_ARCH.

set(cpu_arm64 aarch64)
set(cpu_i386 i686)
set(cpu_s390x s390x)
set(qemu_arm64 qemu-aarch64)
set(qemu_i386 qemu-i386)
set(qemu_s390x qemu-s390x)

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR ${cpu_${VOK_ARCH}})
set(CMAKE_CXX_COMPILER ${CMAKE_SYSTEM_PROCESSOR}-linux-gnu-g++)
set(CMAKE_SYSROOT /target/${VOK_ARCH})
set(VOK_RULECHECK_RANDOM_DOUBLES 10000 CACHE STRING "")
set(CMAKE_CROSSCOMPILING_EMULATOR ${qemu_${VOK_ARCH}} -L ${CMAKE_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
foreach(kind IN ITEMS INCLUDE LIBRARY PACKAGE)
  set(CMAKE_FIND_ROOT_PATH_MODE_${kind} ONLY)
endforeach()
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VOK_ARCH)
