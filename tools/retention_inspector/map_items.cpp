// Choice and order of what a map shows.
// SPDX-License-Identifier: MIT
#include "tools/retention_inspector/map_items.h"

#include "tools/retention_core/entry_verdict.h"

#include <QtCore/QStringList>

#include <algorithm>
#include <utility>

namespace {

QString entryNames(const Layout& layout, const LayoutBlock& block)
{
    QStringList names;
    for (const int number : block.entries) {
        if (number > 0)
            names.append(layout.settings.entries[static_cast<std::size_t>(number - 1)].name);
        if (names.size() == 8) // more have no room in a box
            break;
    }
    return names.join(QLatin1String(", "));
}

MapItem blockItem(const Layout& layout, const AreaLayout& area, const LayoutBlock& block)
{
    MapItem item;
    item.block = &block;
    item.cells = {block.first, block.last()};
    item.names = entryNames(layout, block);
    if (!block.problem.isEmpty())
        item.kind = MapItem::Kind::Unsound;
    else
        item.lost = CellRanges({item.cells}).minus(area.kept);
    if (item.lost == CellRanges({item.cells})) {
        item.kind = MapItem::Kind::Lost;
        item.lost = {};
    }
    if (item.kind == MapItem::Kind::Retained && block.entries.size() > 1)
        item.kind = MapItem::Kind::Folded;
    return item;
}

} // namespace

AreaMap areaMap(const Layout& layout, const AreaFacts& area)
{
    AreaMap map;
    map.layout = &layout.of(area);
    std::vector<CellRange> lost;
    for (const EntryVerdict& verdict : entryVerdicts(layout))
        if (verdict.entry->area == &area)
            lost.insert(lost.end(), verdict.lost.begin(), verdict.lost.end());
    map.lost = CellRanges(std::move(lost));

    std::vector<CellRange> inBlocks;
    for (const LayoutBlock& block : map.layout->blocks) {
        if (block.count <= 0)
            continue;
        map.items.push_back(blockItem(layout, *map.layout, block));
        inBlocks.push_back({block.first, block.last()});
    }
    for (const CellRange& cells : map.lost.minus(CellRanges(std::move(inBlocks)))) {
        MapItem item;
        item.kind = MapItem::Kind::Lost;
        item.cells = cells;
        map.items.push_back(item);
    }
    std::stable_sort(map.items.begin(), map.items.end(),
                     [](const MapItem& a, const MapItem& b) { return a.cells.first < b.cells.first; });
    return map;
}
