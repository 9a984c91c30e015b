// Gives this process a private /usr/tavrin, so that the module's fixed directory can be any directory.
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QString>

/// The directory that is fixed in the module.
inline const char* const fixedProjectDirectory = "/usr/tavrin/project";

/// Gives this process and its children a /usr/tavrin of their own. It does not exist at first; only they see
/// what is created there, and it is gone when they end. Uses a mount namespace where that is allowed, as root
/// or as an ordinary user; otherwise maps paths in this process (file_calls/path_mapping.h), which programs
/// that it executes do not share. Call it once, before starting any thread. Returns an empty string, or what
/// went wrong.
QString enterPrivateUsr();

/// Makes `directory`, which must exist, appear as the fixed directory. Call enterPrivateUsr() first. Returns
/// an empty string, or what went wrong.
QString mapProjectDirectory(const QString& directory);

/// One line that tells the user why paths are mapped; empty in a mount namespace.
QString pathMappingNotice();

/// The directory that appears as /usr/tavrin, to be passed to other programs in `usrTavrinVariable`; empty in
/// a mount namespace, which they share.
QString mappedUsrTavrin();
