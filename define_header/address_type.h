// Converts address types between text and code.
// SPDX-License-Identifier: MIT
#pragma once

#include "define_header/export.h"

#include <QtCore/QString>

/// "Bit" for 1, "Word" for 2, "Double Word" for 4; an empty (not null) string for any other code.
POWEROFF_PROTECT_EXPORT QString addressType2QString(int code);

/// The code of exactly that text, including case and blanks; -1 for any other text and the null string.
POWEROFF_PROTECT_EXPORT int addressType2Int(QString text);
