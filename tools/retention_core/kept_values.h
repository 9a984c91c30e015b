// The values that retention files hold, by address.
// SPDX-License-Identifier: MIT
#ifndef TOOLS_RETENTION_CORE_KEPT_VALUES_H
#define TOOLS_RETENTION_CORE_KEPT_VALUES_H

#include "tools/retention_core/layout.h"
#include "tools/retention_core/retention_files.h"

#include <array>
#include <vector>

enum class CellState : unsigned char
{
    NotRetained, ///< the project does not keep the cell
    Kept,        ///< the value comes back at the next start
    StartValue,  ///< 0 in the file, but in a byte of zeros, which leaves the panel's own start value alone
    NoValue      ///< the file is missing, empty or ends before the cell
};

/// Of every cell of one area. A cell without a value has the value 0.
struct AreaValues
{
    const AreaFacts* area = nullptr;
    std::vector<ushort> values;
    std::vector<CellState> states;
    qint64 oddBytes = 0; ///< bytes of an "LB" image that are neither 0 nor 1

    bool hasValue(std::size_t cell) const
    {
        return states[cell] == CellState::Kept || states[cell] == CellState::StartValue;
    }
    CellRanges cellsIn(CellState state) const;
};

/// In the order of areaFacts.
using KeptValues = std::array<AreaValues, 3>;

/// Reads a file of any length and contents by the layout. A file that is not readable has no values.
AreaValues areaValues(const Layout& layout, const RetentionFile& file);
KeptValues keptValues(const Layout& layout, const RetentionFiles& files);

/// Number of set bits behind the last cell of a per-address "LB" file, up to a few kilobytes behind it; 0 for
/// other files.
qint64 strayBits(const Layout& layout, const RetentionFile& file);

#endif
