# Sets where things are installed.
# SPDX-License-Identifier: MIT

# On Debian, each processor has its own library folder, so that packages for different processors install together.
if(NOT DEFINED CMAKE_INSTALL_LIBDIR AND CMAKE_LIBRARY_ARCHITECTURE AND EXISTS "${CMAKE_SYSROOT}/var/lib/dpkg/status")
    set(CMAKE_INSTALL_LIBDIR lib/${CMAKE_LIBRARY_ARCHITECTURE} CACHE PATH "Object code libraries")
endif()
include(GNUInstallDirs)
