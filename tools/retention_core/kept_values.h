// Reads and writes the values of retention files, by address.
// SPDX-License-Identifier: MIT
#pragma once

#include "tools/retention_core/layout.h"
#include "tools/retention_core/retention_files.h"

#include <vector>

enum class CellState : unsigned char
{
    NotRetained, ///< the project does not keep the cell
    Kept,        ///< the value comes back at the next start
    StartValue,  ///< a 0 in a file byte of zeros, which leaves the panel's own start value alone
    HalfWord, ///< the file ends in the middle of the word: its low byte comes back, with 0 as the high byte
    NoValue   ///< the file is missing, empty or ends before the cell
};

/// Where a cell lies in its file.
struct FilePlace
{
    qint64 byte;
    int bytes; ///< 2 for a word, low byte first
    int mask;  ///< of its bits in these bytes
};

/// The place of a cell that the area keeps, in the block that holds it.
FilePlace filePlace(const AreaLayout& area, const LayoutBlock& block, qint64 cell);

/// The values and states of every cell of one area. A cell without a value has the value 0.
struct AreaValues
{
    const AreaFacts* area = nullptr;
    std::vector<ushort> values;
    std::vector<CellState> states;
    qint64 oddBytes = 0; ///< bytes of an "LB" image that are neither 0 nor 1

    bool hasValue(std::size_t cell) const
    {
        return states[cell] != CellState::NotRetained && states[cell] != CellState::NoValue;
    }
    CellRanges cellsIn(CellState state) const;
};

/// Reads a file of any length and contents according to the layout. An unreadable file has no values.
AreaValues areaValues(const Layout& layout, const RetentionFile& file);

/// Writes the values of the cells that the area keeps to a file of at least fileLength bytes. The rest of the
/// file is unchanged. False when the device fails.
bool writeValues(const AreaLayout& area, const std::vector<ushort>& values, QIODevice& device);

/// The number of set bits in the few kilobytes after the last cell of a per-address "LB" file; 0 for other
/// files, and when the place of the last cell is uncertain.
qint64 strayBits(const Layout& layout, const RetentionFile& file);
