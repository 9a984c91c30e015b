# The panel's processor: 32-bit ARM with hardware floating point (Debian's armhf: ARMv7, VFPv3-D16).
# scripts/armhf_sysroot makes the sysroot; ARMHF_SYSROOT names another, such as the device's own.
# SPDX-License-Identifier: MIT
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)

set(ARMHF_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../build/armhf-sysroot CACHE PATH "Root folder of the device's libraries")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES ARMHF_SYSROOT)
get_filename_component(CMAKE_SYSROOT ${ARMHF_SYSROOT} ABSOLUTE)
if(NOT IS_DIRECTORY ${CMAKE_SYSROOT}/usr)
    message(FATAL_ERROR "No sysroot in ${CMAKE_SYSROOT}. Run scripts/armhf_sysroot, or name one with -DARMHF_SYSROOT=.")
endif()

set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
# Without GCC's notes on how C++17 passed arguments before GCC 7.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -L ${CMAKE_SYSROOT})

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# The build machine's own libraries must not be taken for the device's.
set(ENV{PKG_CONFIG_LIBDIR} ${CMAKE_SYSROOT}/usr/lib/arm-linux-gnueabihf/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${CMAKE_SYSROOT})
