// Describes where a project's retained cells lie in its files, according to the module's own rules.
// SPDX-License-Identifier: MIT
#pragma once

#include "poweroff_protect/maintenance_file_info.h"
#include "tools/retention_core/cell_ranges.h"
#include "tools/retention_core/project_settings.h"

#include <array>
#include <vector>

/// One block of a file: consecutive cells in consecutive places. In whole-area mode the image is one block.
struct LayoutBlock
{
    int number = 0;           ///< in its area, from 1
    MaintenanceFileInfo info; ///< as the module places it; a count of zero or less holds nothing
    int maker = 0;            ///< number of the entry whose address it keeps; 0 in whole-area mode
    std::vector<int> entries; ///< numbers of the entries folded into it, ascending

    qint64 first() const { return info.address.index; }
    qint64 last() const { return first() + info.count - 1; }
    CellRange cells() const { return {first(), last()}; }
};

struct AreaLayout
{
    const AreaFacts* area = nullptr;
    bool image = false;              ///< the file is an image of the area; otherwise packed blocks
    std::vector<LayoutBlock> blocks; ///< ascending by first cell
    qint64 cells = 0;                ///< sum of the blocks' counts; `kept` are those that come back
    qint64 fileLength = 0;           ///< bytes of a new file
    CellRanges kept;                 ///< cells of the area whose values come back after a power cut
    QString problem;                 ///< why no value of the area is reliable; empty for a sound area

    /// The block that contains an entry of this area with at least one cell; null for none.
    const LayoutBlock* blockOf(const ProjectEntry& entry) const;
};

struct Layout
{
    ProjectSettings settings;
    std::array<AreaLayout, areaCount> areas; ///< in the order of areaFacts

    const AreaLayout& of(const AreaFacts& area) const { return areas[&area - areaFacts]; }
    /// True in whole-area mode: the files are images of the areas. Otherwise they are packed blocks.
    bool images() const { return settings.mode == RetentionMode::WholeAreas; }
};

/// Cells of an area whose changes are not written in per-address mode.
CellRanges ignoredCells(const AreaFacts& area);

/// The layout that the module derives from these settings, whatever their values.
Layout makeLayout(ProjectSettings settings);
