# Packs, with cpack: for Debian the module, what is built against it, the tools, and the debugging symbols of each;
# elsewhere one archive. scripts/package does so for every processor.
# SPDX-License-Identifier: MIT
set(POWEROFF_PROTECT_MAINTAINER "The poweroff_protect authors <authors@poweroff-protect.invalid>" CACHE STRING
    "Who answers for the packages: Name <address>")

set(CPACK_PACKAGE_VENDOR "The poweroff_protect authors")
set(CPACK_PACKAGE_CONTACT ${POWEROFF_PROTECT_MAINTAINER})
set(CPACK_PACKAGE_NAME poweroff-protect)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PACKAGE_FILE_NAME
    poweroff-protect-${PROJECT_VERSION}-qt${POWEROFF_PROTECT_QT}-${CMAKE_SYSTEM_PROCESSOR})
set(CPACK_GENERATOR TXZ)
set(CPACK_STRIP_FILES ON)

find_program(DPKG_ARCHITECTURE dpkg-architecture)
find_program(FILE_EXECUTABLE file)
mark_as_advanced(DPKG_ARCHITECTURE FILE_EXECUTABLE)
if(DPKG_ARCHITECTURE AND FILE_EXECUTABLE AND CMAKE_LIBRARY_ARCHITECTURE)
    execute_process(COMMAND ${DPKG_ARCHITECTURE} -t${CMAKE_LIBRARY_ARCHITECTURE} -qDEB_HOST_ARCH
                    OUTPUT_VARIABLE CPACK_DEBIAN_PACKAGE_ARCHITECTURE OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
endif()
# No supported Debian has Qt 4: such a module is only put into archives.
if(CPACK_DEBIAN_PACKAGE_ARCHITECTURE AND NOT POWEROFF_PROTECT_QT EQUAL 4)
    if(CMAKE_VERSION VERSION_LESS 3.19)
        message(STATUS "Debian packages need CMake 3.19, this is ${CMAKE_VERSION}: cpack makes an archive instead.")
    else()
        set(CPACK_GENERATOR DEB)
        include(packaging/debian/packages.cmake)
    endif()
endif()
include(CPack)
