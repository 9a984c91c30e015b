// A private /usr/tavrin for this process, so that the module's fixed directory can be any directory.
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QString>

/// The directory that is fixed in the module.
inline const char* const fixedProjectDirectory = "/usr/tavrin/project";

/// Gives this process and its children a /usr/tavrin of their own, which is missing at first; what is made
/// there is seen by them only and gone with them. In a mount namespace where that may be had, as root or as
/// an ordinary user; otherwise by mapping paths in this process (file_calls/path_mapping.h), which programs
/// that it executes do not share. Call it once, before any thread is started. Returns an empty string, or
/// what went wrong.
QString enterPrivateUsr();

/// Makes the fixed directory show `directory`, which must exist. Call enterPrivateUsr() first. Returns an
/// empty string, or what went wrong.
QString mapProjectDirectory(const QString& directory);

/// One line for the user about why paths are mapped, when they are; empty in a mount namespace.
QString pathMappingNotice();

/// The directory that is /usr/tavrin, for programs that are given it with `usrTavrinVariable`; empty in a
/// mount namespace, which they share.
QString mappedUsrTavrin();
