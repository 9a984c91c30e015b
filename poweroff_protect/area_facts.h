// Lists the facts in which the areas "LB", "LW" and "RWI" differ, in one table.
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QString>

/// One area. The two numberings are the runtime's, and unrelated.
struct AreaFacts
{
    const char* name;     ///< the runtime's name of the area
    const char* fileName; ///< its file in the project directory
    int wholeAreaCode;    ///< as in InterfaceComm::getAreaMemory()
    int perAddressCode;   ///< decides the length of a new per-address file
    int imageBytes;       ///< size of the area's memory
    bool bits;            ///< cells are bits; otherwise 16-bit words
    bool movesBitNumber;  ///< its blocks count towards the bit number by which a restore finds "LB" cells
};

/// The areas in the order in which every operation visits them.
const int areaCount = 3;
extern const AreaFacts areaFacts[areaCount];

/// The area of exactly that name; null for any other.
const AreaFacts* areaNamed(const QString& name);
/// The same. `name` must not be null, and is read no further than where it differs.
const AreaFacts* areaNamed(const char* name);

/// The number of cells: 65536 in each of the three. An image of bits has one byte per cell.
inline qint64 cellCount(const AreaFacts& area)
{
    return area.bits ? area.imageBytes : area.imageBytes / 2;
}

/// The one bit cell whose changes are never written through.
const int ignoredBitAddress = 60100;
inline bool isIgnoredBit(const AreaFacts& area, int address)
{
    return area.bits && address == ignoredBitAddress;
}
