// Converts between cells and values: numbers of one or two words, decimal digits, texts.
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QString>

#include <vector>

/// How consecutive cells of one area hold a value.
struct ValueType
{
    enum class Kind
    {
        Bit,
        Int16,
        UInt16,
        Int32,
        UInt32,
        Float, ///< IEEE 754, two words
        Bcd,   ///< four decimal digits in one word
        Bcd32, ///< eight decimal digits in two words
        String ///< UTF-8, two bytes per word, padded with zero bytes
    };

    Kind kind = Kind::UInt16;
    int length = 0;         ///< of a String, in bytes
    bool highFirst = false; ///< the high word, or of a String the high byte of each word, comes first

    bool isBit() const { return kind == Kind::Bit; }
    int cells() const;    ///< from 1
    QString text() const; ///< such as "int32", "float:high-first" or "string:20"
};

/// The type of a single cell: "bit" or "uint16".
ValueType cellType(bool bits);

/// Parses text such as "int32", "float:high-first" or "string:20". Throws a Refusal that says what was
/// expected.
ValueType valueTypeOf(const QString& text);

/// The value of cells() cells. Null when they hold no value of this type, such as decimal digits above 9 or a
/// text that is not UTF-8: exactly when cellsOfValue() would not return these cells.
QString valueText(const ValueType& type, const ushort* cells);

/// The cells of a value: a decimal number (a whole one also as 0x...), or the text itself. Throws a Refusal
/// that says what was expected.
std::vector<ushort> cellsOfValue(const ValueType& type, const QString& text);
