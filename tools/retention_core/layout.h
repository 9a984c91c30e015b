// Where a project's retained cells lie in its files, as the module's own partition and map place them.
// SPDX-License-Identifier: MIT
#ifndef TOOLS_RETENTION_CORE_LAYOUT_H
#define TOOLS_RETENTION_CORE_LAYOUT_H

#include "tools/retention_core/cell_ranges.h"
#include "tools/retention_core/project_settings.h"

#include <array>
#include <cstddef>
#include <vector>

/// The one bit whose changes the module never writes in per-address mode.
inline constexpr int unwrittenBit = 60100;

/// One block of a file: consecutive cells in consecutive places.
struct LayoutBlock
{
    int number = 0;           ///< in its area, from 1
    qint64 first = 0;         ///< first cell
    qint64 count = 0;         ///< number of cells; zero or negative ones hold nothing
    qint64 byte = 0;          ///< place of the first cell: offset in the file
    int bit = 0;              ///< and bit in that byte; 0 in word files and images
    int maker = 0;            ///< number of the entry that it was made from; 0 in whole-area mode
    std::vector<int> entries; ///< numbers of the entries that went into it, ascending
    QString problem;          ///< why its values do not come back; empty for a sound block

    qint64 last() const { return first + count - 1; }
};

struct AreaLayout
{
    const AreaFacts* area = nullptr;
    std::vector<LayoutBlock> blocks; ///< ascending by first cell
    std::vector<std::size_t> filled; ///< places in `blocks` of those with cells, in per-address mode
    qint64 cells = 0;                ///< sum of the blocks' counts
    qint64 fileLength = 0;           ///< bytes of a new file
    CellRanges kept;                 ///< cells of the area whose values come back after a power cut

    /// The block that an entry of this area with at least one cell went into; null for none.
    const LayoutBlock* blockOf(const ProjectEntry& entry) const;
    LayoutBlock* blockOf(const ProjectEntry& entry);
};

struct Layout
{
    ProjectSettings settings;
    std::array<AreaLayout, 3> areas; ///< in the order of areaFacts

    const AreaLayout& of(const AreaFacts& area) const { return areas[&area - areaFacts]; }
    /// In whole-area mode the files are images of the areas, one byte a bit; otherwise packed blocks.
    bool images() const { return settings.mode == RetentionMode::WholeAreas; }
};

/// The layout that the module makes of these settings, whatever their values.
Layout makeLayout(ProjectSettings settings);

#endif
