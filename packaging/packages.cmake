# cpack: a Debian package and an archive of what cmake --install puts in place. scripts/package makes all of them.
# SPDX-License-Identifier: MIT
set(CPACK_GENERATOR DEB TGZ)
set(CPACK_PACKAGE_NAME poweroff-protect)
set(CPACK_PACKAGE_VENDOR "The poweroff_protect authors")
set(CPACK_PACKAGE_CONTACT "The poweroff_protect authors <authors@poweroff-protect.invalid>")
set(CPACK_PACKAGE_DESCRIPTION
    "The module is loaded by the panel's runtime. It keeps chosen contents of the areas LB, LW and RWI in files of the
project directory and puts them back at the next start.")
set(CPACK_STRIP_FILES ON)

if(CMAKE_SYSTEM_PROCESSOR MATCHES "^arm")
    set(processor armhf)
else()
    execute_process(COMMAND dpkg --print-architecture OUTPUT_VARIABLE processor OUTPUT_STRIP_TRAILING_WHITESPACE)
endif()
set(CPACK_PACKAGE_FILE_NAME poweroff-protect-${PROJECT_VERSION}-${processor})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${processor})
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# What dpkg-shlibdeps finds for the library; stated, because it cannot look into another processor's packages.
set(CPACK_DEBIAN_PACKAGE_DEPENDS
    "libc6 (>= 2.4), libgcc-s1 (>= 3.5), libqt5core5a (>= 5.15.1), libstdc++6 (>= 4.4.0)")
include(CPack)
