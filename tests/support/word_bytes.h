// Spells words as bytes in the byte order of the machine that runs the test, in which the module stores them.
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QtGlobal>

#include <cstring>

/// The bytes of words that are given in hexadecimal digits, low byte first as a panel stores them.
inline QByteArray wordBytes(const char* lowByteFirst)
{
    QByteArray bytes = QByteArray::fromHex(lowByteFirst);
#if Q_BYTE_ORDER == Q_BIG_ENDIAN
    for (int k = 0; k + 1 < bytes.size(); k += 2) {
        const char low = bytes.at(k);
        bytes[k] = bytes.at(k + 1);
        bytes[k + 1] = low;
    }
#endif
    return bytes;
}

/// The word that this machine finds in two bytes of memory, given in hexadecimal digits.
inline ushort wordIn(const char* bytes)
{
    ushort word = 0;
    std::memcpy(&word, QByteArray::fromHex(bytes).constData(), sizeof word);
    return word;
}
