# 64-bit ARM, as 32-bit ARM but for the names. scripts/armhf_sysroot arm64 makes the sysroot.
# SPDX-License-Identifier: MIT
set(ARMHF_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../build/arm64-sysroot CACHE PATH "Root folder of the device's libraries")
include(${CMAKE_CURRENT_LIST_DIR}/armhf.cmake)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
unset(CMAKE_CXX_FLAGS_INIT)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L ${CMAKE_SYSROOT})
set(ENV{PKG_CONFIG_LIBDIR} ${CMAKE_SYSROOT}/usr/lib/aarch64-linux-gnu/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig)
