// A private /usr/tavrin for this process, so that the module's fixed directory can be any directory.
// SPDX-License-Identifier: MIT
#ifndef SIMULATED_HOST_PRIVATE_DIRECTORY_H
#define SIMULATED_HOST_PRIVATE_DIRECTORY_H

#include <QtCore/QString>

/// The directory that is fixed in the module.
inline const char* const fixedProjectDirectory = "/usr/tavrin/project";

/// Moves this process into a mount namespace of its own in which /usr is a scratch file system with the
/// entries of the machine's /usr in it, all but "tavrin": what is made there is seen by this process and its
/// children only and gone with them. Works as root and, where the kernel allows user namespaces, as an
/// ordinary user. Call it before any thread is started. Returns an empty string, or what went wrong.
QString enterPrivateUsr();

/// Makes the fixed directory show `directory`, which must exist. Call enterPrivateUsr() first. Returns an
/// empty string, or what went wrong.
QString mapProjectDirectory(const QString& directory);

#endif
