// Makes a scratch directory that is removed when the process ends, however it ends.
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QString>

/// Creates an empty directory in the machine's directory for temporary files. It is removed with everything
/// in it as soon as this process and the children that it forks have ended, even when they were killed.
/// Returns an empty string when none can be created.
QString makeScratchDirectory();
