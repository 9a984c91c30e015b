// Draws the three files of a project as an SVG picture.
// SPDX-License-Identifier: MIT
#pragma once

#include "tools/retention_core/layout.h"

#include <QtCore/QByteArray>

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

/// What the picture shows of one area, in ascending order of addresses. Blocks without cells are left out.
/// Points into `layout`.
AreaMap areaMap(const Layout& layout, const AreaFacts& area);

/// An SVG document: for each area its range to scale, then its blocks in the order of the file with addresses
/// at their edges, and the configured cells that are not retained, hatched. `title` is put at the top.
QByteArray mapPicture(const Layout& layout, const QString& title);
