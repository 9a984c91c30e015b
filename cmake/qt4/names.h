// Gives Qt 5's names to Qt 4.8, for everything but the module: the build includes it before each source.
// SPDX-License-Identifier: MIT
#pragma once

#if __has_include(<QtCore/QString>) // what does not use Qt is built without its folders
#include <QtCore/QString>

#include <cstdlib>

#define QStringLiteral(text) QString::fromUtf8("" text, sizeof(text) - 1)

namespace Qt {
constexpr QString::SplitBehavior SkipEmptyParts = QString::SkipEmptyParts;
} // namespace Qt

inline bool qunsetenv(const char* name)
{
    return unsetenv(name) == 0;
}
inline bool qEnvironmentVariableIsEmpty(const char* name)
{
    return qgetenv(name).isEmpty();
}
inline QString qEnvironmentVariable(const char* name)
{
    return QString::fromLocal8Bit(qgetenv(name));
}
#endif
