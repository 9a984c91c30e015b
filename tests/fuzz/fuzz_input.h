// Takes numbers and texts from a fuzzer's bytes.
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <cstddef>
#include <cstdint>

/// Reads from the front of the bytes; past their end everything is zero or empty.
class FuzzInput
{
public:
    FuzzInput(const std::uint8_t* data, std::size_t size) : data(data), size(size) {}

    bool atEnd() const { return size == 0; }
    std::uint8_t byte();
    /// Any 32-bit value. Its first byte decides how many more it takes, so that common numbers are short and
    /// limits are frequent.
    std::int32_t number();
    /// The next bytes; the first one gives their number.
    QByteArray bytes();
    QString text() { return QString::fromUtf8(bytes()); }
    /// The same bytes as an input of their own.
    FuzzInput part();

private:
    std::uint32_t littleEndian(int bytes);

    const std::uint8_t* data;
    std::size_t size;
};
