# Builds for the panel's processor: 32-bit ARM with hardware floating point (Debian's armhf: ARMv7, VFPv3-D16).
# scripts/armhf_sysroot makes the sysroot; ARMHF_SYSROOT names another, such as the device's own.
# SPDX-License-Identifier: MIT
set(ARMHF_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../build/armhf-sysroot CACHE PATH "Root folder of the device's libraries")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES ARMHF_SYSROOT)
set(CROSS_TRIPLET arm-linux-gnueabihf)
set(CROSS_PROCESSOR armv7l)
set(CROSS_EMULATOR qemu-arm)
set(CROSS_SYSROOT ${ARMHF_SYSROOT})
include(${CMAKE_CURRENT_LIST_DIR}/debian_cross.cmake)
