// Parses numbers as people type them, in the same way for every tool.
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QString>

#include <optional>

/// A whole number from `lowest` to `highest`: decimal, or hexadecimal with 0x, with or without a sign.
/// Nothing for any other text.
inline std::optional<qint64> wholeNumber(const QString& text, qint64 lowest, qint64 highest)
{
    const bool negative = text.startsWith(QLatin1Char('-'));
    const QString digits = negative || text.startsWith(QLatin1Char('+')) ? text.mid(1) : text;
    const bool hexadecimal = digits.startsWith(QLatin1String("0x"), Qt::CaseInsensitive);
    if (digits.isEmpty() || !digits.at(0).isDigit())
        return std::nullopt;
    bool ok = false;
    const qint64 size = hexadecimal ? digits.mid(2).toLongLong(&ok, 16) : digits.toLongLong(&ok, 10);
    const qint64 value = negative ? -size : size;
    if (!ok || size < 0 || value < lowest || value > highest)
        return std::nullopt;
    return value;
}
