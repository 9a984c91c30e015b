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

/// What the picture shows of one area, by ascending address, without blocks that have no cells. Points into
/// `layout`.
AreaMap areaMap(const Layout& layout, const AreaFacts& area);

/// An SVG document, with `title` at the top. For each area it has the range to scale, the blocks in the order
/// of the file with addresses at their edges, and, hatched, the configured cells that are not retained.
QByteArray mapPicture(const Layout& layout, const QString& title);
