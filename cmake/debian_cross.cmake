# Builds for another processor with Debian's cross compiler: CROSS_TRIPLET (such as arm-linux-gnueabihf), CROSS_PROCESSOR (as
# in uname -m), CROSS_EMULATOR (the program of qemu-user), CROSS_SYSROOT (made by scripts/sysroot).
# SPDX-License-Identifier: MIT
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR ${CROSS_PROCESSOR})
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES CROSS_TRIPLET CROSS_PROCESSOR CROSS_EMULATOR CROSS_SYSROOT)

get_filename_component(CMAKE_SYSROOT ${CROSS_SYSROOT} ABSOLUTE)
if(NOT IS_DIRECTORY ${CMAKE_SYSROOT}/usr)
    message(FATAL_ERROR "No sysroot in ${CMAKE_SYSROOT}. scripts/sysroot makes one (scripts/armhf_sysroot for the panel), "
                        "or name one with -DARMHF_SYSROOT=.")
endif()

set(CMAKE_CXX_COMPILER ${CROSS_TRIPLET}-g++)
# Silences GCC's notes about the argument passing of C++17 before GCC 7.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)
string(REPLACE i686 i386 CMAKE_LIBRARY_ARCHITECTURE ${CROSS_TRIPLET})
# The cross compiler has a C library of its own, which may be older than the sysroot's.
file(GLOB cross_libraries ${CMAKE_SYSROOT}/usr/lib/gcc/${CROSS_TRIPLET}/*)
list(PREPEND cross_libraries ${CMAKE_SYSROOT}/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE})
list(TRANSFORM cross_libraries PREPEND -L)
list(JOIN cross_libraries " " cross_libraries)
set(CMAKE_EXE_LINKER_FLAGS_INIT ${cross_libraries})
set(CMAKE_SHARED_LINKER_FLAGS_INIT ${cross_libraries})
set(CMAKE_CROSSCOMPILING_EMULATOR ${CROSS_EMULATOR} -L ${CMAKE_SYSROOT})

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# The build machine's own libraries must not be used for the device.
set(ENV{PKG_CONFIG_LIBDIR} ${CMAKE_SYSROOT}/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${CMAKE_SYSROOT})
