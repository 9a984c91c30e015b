// Lays out the files of a project by the module's rules, and tells which cells are reliable.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/layout.h"

#include "poweroff_protect/partition.h"
#include "poweroff_protect/placement.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace {

/// The entries of one area in the order in which the module folds them.
std::vector<const ProjectEntry*> sortedEntries(const ProjectSettings& settings, const AreaFacts& area)
{
    std::vector<const ProjectEntry*> sorted;
    for (const ProjectEntry& entry : settings.entries)
        if (entry.area == &area)
            sorted.push_back(&entry);
    std::sort(sorted.begin(), sorted.end(), [](const ProjectEntry* a, const ProjectEntry* b) {
        return compare(a->configured, b->configured);
    });
    return sorted;
}

/// Negative lengths and sums that wrap place blocks on top of each other, or before the start of the file,
/// where one access ends all further access. Any block of the area may be affected, so none is reliable.
QString problemOf(const AreaLayout& layout, const ProjectSettings& settings)
{
    const qint64 largest = std::numeric_limits<int>::max();
    qint64 cells = 0;
    for (const LayoutBlock& block : layout.blocks) {
        const int count = block.info.count;
        cells += count;
        const bool tooLarge = block.last() >= largest || cells > (layout.area->bits ? largest : largest / 2);
        if (count < 0 || tooLarge)
            return QStringLiteral("the \"addressLength\" of %1 %2")
                .arg(settings.entries[static_cast<std::size_t>(block.maker - 1)].text(),
                     QLatin1String(count < 0 ? "is negative, which shifts the blocks after it onto others"
                                             : "is larger than the module can count"));
    }
    return {};
}

/// Lists in every block the entries folded into it; in a block without cells, the entry that made it.
void nameEntries(const ProjectSettings& settings, AreaLayout& layout)
{
    for (LayoutBlock& block : layout.blocks)
        if (block.info.count <= 0)
            block.entries.push_back(block.maker);
    for (const ProjectEntry& entry : settings.entries)
        if (entry.area == layout.area && entry.length() > 0)
            if (const LayoutBlock* const block = layout.blockOf(entry))
                layout.blocks[static_cast<std::size_t>(block->number - 1)].entries.push_back(entry.number);
}

void layOutBlocks(const ProjectSettings& settings, AreaLayout& layout)
{
    const std::vector<const ProjectEntry*> entries = sortedEntries(settings, *layout.area);
    QVector<structMaintenance> configured;
    for (const ProjectEntry* entry : entries)
        configured.append(entry->configured);
    const QVector<KeptRange> ranges = partition(configured);
    QList<MaintenanceFileInfo> placed;
    for (const KeptRange& range : ranges) {
        MaintenanceFileInfo info;
        info.address = configured.at(range.entry).address;
        info.count = range.count;
        placed.append(info);
    }
    placeBlocks(placed);
    layout.fileLength = std::max(0, newFileLength(layout.area->perAddressCode, placed));
    for (int i = 0; i < placed.size(); ++i)
        layout.blocks.push_back(
            {i + 1, placed.at(i), entries[static_cast<std::size_t>(ranges.at(i).entry)]->number, {}});
    nameEntries(settings, layout);
    layout.problem = problemOf(layout, settings);
}

void layOutImage(AreaLayout& layout)
{
    LayoutBlock block;
    block.number = 1;
    block.info.count = static_cast<int>(cellCount(*layout.area));
    layout.blocks = {block};
    layout.fileLength = layout.area->imageBytes;
}

CellRanges keptCells(const AreaLayout& layout)
{
    if (!layout.problem.isEmpty())
        return {};
    std::vector<CellRange> cells;
    for (const LayoutBlock& block : layout.blocks)
        cells.push_back(block.cells());
    const CellRanges kept = CellRanges(std::move(cells)).within({0, cellCount(*layout.area) - 1});
    return layout.image ? kept : kept.minus(ignoredCells(*layout.area));
}

} // namespace

CellRanges ignoredCells(const AreaFacts& area)
{
    return area.bits ? CellRanges({{ignoredBitAddress, ignoredBitAddress}}) : CellRanges();
}

const LayoutBlock* AreaLayout::blockOf(const ProjectEntry& entry) const
{
    const auto after =
        std::upper_bound(blocks.begin(), blocks.end(), entry.first(),
                         [](qint64 cell, const LayoutBlock& block) { return cell < block.first(); });
    return after == blocks.begin() ? nullptr : &*(after - 1);
}

Layout makeLayout(ProjectSettings settings)
{
    Layout result;
    result.settings = std::move(settings);
    for (const AreaFacts& area : areaFacts) {
        AreaLayout& layout = result.areas[&area - areaFacts];
        layout.area = &area;
        layout.image = result.images();
        if (layout.image)
            layOutImage(layout);
        else
            layOutBlocks(result.settings, layout);
        for (const LayoutBlock& block : layout.blocks)
            layout.cells += block.info.count;
        layout.kept = keptCells(layout);
    }
    return result;
}
