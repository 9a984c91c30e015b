// A scratch directory that goes when the process goes, whichever way that is.
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QString>

/// Makes an empty directory in the machine's directory for temporary files. It is removed with all that is in
/// it as soon as this process and the children that it forks have ended, also when they were killed. Empty
/// when none can be made.
QString makeScratchDirectory();
