// Address types as texts and as codes. A code is the size of the type, so there is no 3 and no 0.
// SPDX-License-Identifier: MIT
#pragma once

#include "define_header/export.h"

#include <QtCore/QString>

/// 1 "Bit", 2 "Word", 4 "Double Word"; an empty (not null) string for any other code.
POWEROFF_PROTECT_EXPORT QString addressType2QString(int code);

/// The code of exactly that text, case and blanks included; -1 for any other, the null string included.
POWEROFF_PROTECT_EXPORT int addressType2Int(QString text);
