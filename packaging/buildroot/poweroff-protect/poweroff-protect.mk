# Builds the module for a panel's image with Buildroot (Qt 5). Untried: nobody has run make on it yet. It calls CMake as
# scripts/package does for a foreign processor.
#
# Copy the folder into package/ of a Buildroot or of an external tree, name it in the Config.in there, and put the source
# archive of scripts/package next to this file.
# SPDX-License-Identifier: MIT
POWEROFF_PROTECT_VERSION = 1.1.0
POWEROFF_PROTECT_SOURCE = poweroff-protect-$(POWEROFF_PROTECT_VERSION).tar.xz
POWEROFF_PROTECT_SITE = file://$(POWEROFF_PROTECT_PKGDIR)
POWEROFF_PROTECT_LICENSE = MIT
POWEROFF_PROTECT_LICENSE_FILES = LICENSE
POWEROFF_PROTECT_DEPENDENCIES = qt5base
POWEROFF_PROTECT_INSTALL_STAGING = YES
POWEROFF_PROTECT_CONF_OPTS = \
	-DPOWEROFF_PROTECT_QT=5 \
	-DPOWEROFF_PROTECT_TOOLS=OFF \
	-DPOWEROFF_PROTECT_TESTS=OFF

$(eval $(cmake-package))
