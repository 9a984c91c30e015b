# Builds for 64-bit ARM (Debian's arm64). scripts/armhf_sysroot arm64 makes the sysroot.
# SPDX-License-Identifier: MIT
set(CROSS_TRIPLET aarch64-linux-gnu)
set(CROSS_PROCESSOR aarch64)
set(CROSS_EMULATOR qemu-aarch64)
set(CROSS_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../build/arm64-sysroot)
include(${CMAKE_CURRENT_LIST_DIR}/debian_cross.cmake)
