// Holds the areas "LB", "LW" and "RWI": the same memory as raw image and as cells.
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QString>

#include <array>
#include <optional>
#include <vector>

/// One area of 65536 cells. A bit cell takes one byte, which setCell() sets to 0 or 1; a word cell takes two
/// bytes, low byte first.
class MemoryArea
{
public:
    static constexpr int cellCount = 65536; ///< addresses 0 to 65535

    /// All cells zero.
    MemoryArea(QString name, int areaCode, bool bits);

    const QString& name() const { return areaName; } ///< as models name it
    int areaCode() const { return code; }            ///< as in InterfaceComm::getAreaMemory()
    bool isBits() const { return bits; }             ///< otherwise words

    std::vector<unsigned char>& memory() { return bytes; } ///< 65536 or 131072 bytes
    const std::vector<unsigned char>& memory() const { return bytes; }

    /// The value of the cell: for a bit 0 or 1 (any non-zero byte), for a word its 16 bits. Nothing outside
    /// the area.
    std::optional<ushort> cell(int address) const;
    /// Sets the cell (a bit: to 1 for any non-zero value). False, with no effect, outside the area.
    bool setCell(int address, ushort value);

private:
    QString areaName;
    int code;
    bool bits;
    std::vector<unsigned char> bytes;
};

/// The three areas, initially all zero, in the order "LB", "LW", "RWI".
class MemoryAreas
{
public:
    MemoryAreas();

    std::array<MemoryArea, 3>& all() { return areas; } ///< in the order above
    const std::array<MemoryArea, 3>& all() const { return areas; }

    /// Null when there is no such area.
    MemoryArea* named(const QString& name);
    const MemoryArea* named(const QString& name) const;
    MemoryArea* withCode(int areaCode); ///< by MemoryArea::areaCode(); null for any other code

private:
    std::array<MemoryArea, 3> areas;
};
