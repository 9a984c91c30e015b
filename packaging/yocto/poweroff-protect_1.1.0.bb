# Builds the module for a panel's image with Yocto (meta-qt5). Untried: nobody has run bitbake on it yet. The CMake call that
# it makes is the one that scripts/package makes for a foreign processor.
# SPDX-License-Identifier: MIT
SUMMARY = "Keeps the values of an operator panel across power loss"
LICENSE = "MIT"
LIC_FILES_CHKSUM = "file://LICENSE;md5=70dc7e13ebf78eee562d845c9628fc43"

# The source archive of scripts/package; lay it beside this recipe in a folder called files.
SRC_URI = "file://${BPN}-${PV}.tar.xz"

inherit cmake_qt5
DEPENDS = "qtbase"
EXTRA_OECMAKE = "-DPOWEROFF_PROTECT_QT=5 -DPOWEROFF_PROTECT_TOOLS=OFF -DPOWEROFF_PROTECT_TESTS=OFF"

# The runtime loads the library by its bare name, so that it is no file for development alone, and it leaves undefined what
# the runtime supplies.
FILES_SOLIBSDEV = ""
FILES:${PN} += "${libdir}/libpoweroff_protect.so"
INSANE_SKIP:${PN} += "dev-so"
