# Builds the module for a panel's image with Yocto (meta-qt5). Untried: nobody has run bitbake on it yet. It calls CMake as
# scripts/package does for a foreign processor.
# SPDX-License-Identifier: MIT
SUMMARY = "Keeps the values of an operator panel across power loss"
LICENSE = "MIT"
LIC_FILES_CHKSUM = "file://LICENSE;md5=70dc7e13ebf78eee562d845c9628fc43"

# The source archive of scripts/package; put it into a folder called files next to this recipe.
SRC_URI = "file://${BPN}-${PV}.tar.xz"

inherit cmake_qt5
DEPENDS = "qtbase"
EXTRA_OECMAKE = "-DPOWEROFF_PROTECT_QT=5 -DPOWEROFF_PROTECT_TOOLS=OFF -DPOWEROFF_PROTECT_TESTS=OFF"

# The runtime loads the library by its bare name, so it is not a file for development only. Its undefined symbols are the
# runtime's.
FILES_SOLIBSDEV = ""
FILES:${PN} += "${libdir}/libpoweroff_protect.so"
INSANE_SKIP:${PN} += "dev-so"
