// What a map shows of one area, in ascending order of addresses.
// SPDX-License-Identifier: MIT
#ifndef TOOLS_RETENTION_INSPECTOR_MAP_ITEMS_H
#define TOOLS_RETENTION_INSPECTOR_MAP_ITEMS_H

#include "tools/retention_core/layout.h"

#include <vector>

struct MapItem
{
    enum class Kind
    {
        Retained, ///< a block of one entry, or an image
        Folded,   ///< a block of several entries
        Unsound,  ///< a block whose values do not come back
        Lost      ///< configured cells in no block, or a block of cells that do not exist
    };

    Kind kind = Kind::Retained;
    CellRange cells;
    const LayoutBlock* block = nullptr; ///< null for cells in no block
    CellRanges lost;                    ///< cells of a sound block that do not come back
    QString names;                      ///< of its entries
};

struct AreaMap
{
    const AreaLayout* layout = nullptr;
    std::vector<MapItem> items;
    CellRanges lost; ///< all configured cells that do not come back
};

/// Blocks without cells are left out. Points into `layout`.
AreaMap areaMap(const Layout& layout, const AreaFacts& area);

#endif
