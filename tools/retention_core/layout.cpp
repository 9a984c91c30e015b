// The layout: the module's blocks, the lengths of the files, and which cells can be relied on.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/layout.h"

#include "poweroff_protect/partition.h"
#include "poweroff_protect/placement.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace {

const qint64 largestInt = std::numeric_limits<int>::max();

LayoutBlock wholeArea(const AreaFacts& area)
{
    LayoutBlock block;
    block.number = 1;
    block.count = cellCount(area);
    return block;
}

/// The module's blocks for the entries of one area. The number of the entry travels in a text that the module
/// carries along and never fills.
QList<MaintenanceFileInfo> moduleBlocks(const ProjectSettings& settings, const AreaFacts& area)
{
    QVector<structMaintenance> entries;
    for (const ProjectEntry& configured : settings.entries) {
        if (configured.area != &area)
            continue;
        structMaintenance entry;
        entry.address = configured.address;
        entry.address.spareText = QString::number(configured.number);
        entry.addressLength = configured.length;
        entries.append(entry);
    }
    std::sort(entries.begin(), entries.end(), compare);
    QList<MaintenanceFileInfo> blocks;
    const QVector<KeptRange> ranges = partition(entries);
    for (const KeptRange& range : ranges) {
        MaintenanceFileInfo block;
        block.address = entries.at(range.entry).address;
        block.count = range.count;
        blocks.append(block);
    }
    placeBlocks(blocks);
    return blocks;
}

/// First and last bit of a block's place in its file.
CellRange place(const LayoutBlock& block, bool bits)
{
    const qint64 first = block.byte * 8 + block.bit;
    return {first, first + block.count * (bits ? 1 : 16) - 1};
}

/// Why a block by itself cannot be relied on. `readFrom` is the bit from which a restore reads it.
QString ownProblem(const LayoutBlock& block, bool bits, qint64 readFrom)
{
    if (block.last() >= largestInt)
        return QStringLiteral("its end is beyond the largest address number, so no change in it is written");
    if (!bits && block.count > largestInt / 2)
        return QStringLiteral("it is larger than the module can write");
    if (place(block, bits).first < 0)
        return QStringLiteral("a negative length before it moves it before the beginning of the file");
    if (bits && place(block, bits).first != readFrom)
        return QStringLiteral("a negative length before it moves it, so that it is written to one place and "
                              "read from another");
    return {};
}

/// Marks blocks that lie in each other's place, which negative lengths and overflowing sums bring about.
void markShared(std::vector<LayoutBlock>& blocks, bool bits)
{
    std::vector<LayoutBlock*> byPlace;
    for (LayoutBlock& block : blocks)
        if (block.count > 0)
            byPlace.push_back(&block);
    std::stable_sort(byPlace.begin(), byPlace.end(), [bits](const LayoutBlock* a, const LayoutBlock* b) {
        return place(*a, bits).first < place(*b, bits).first;
    });
    LayoutBlock* farthest = nullptr; // the block so far that reaches farthest into the file
    for (LayoutBlock* block : byPlace) {
        if (farthest && place(*block, bits).first <= place(*farthest, bits).last) {
            for (LayoutBlock* sharer : {block, farthest})
                if (sharer->problem.isEmpty())
                    sharer->problem = QStringLiteral("it shares its place in the file with block %1")
                                          .arg((sharer == block ? farthest : block)->number);
        }
        if (!farthest || place(*block, bits).last > place(*farthest, bits).last)
            farthest = block;
    }
}

void markProblems(std::vector<LayoutBlock>& blocks, bool bits)
{
    qint64 readFrom = 0;
    const LayoutBlock* beforeFile = nullptr;
    for (LayoutBlock& block : blocks) {
        if (block.count <= 0)
            continue;
        block.problem = ownProblem(block, bits, readFrom);
        readFrom += block.count;
        if (block.byte < 0)
            beforeFile = &block;
    }
    markShared(blocks, bits);
    if (!beforeFile)
        return;
    for (LayoutBlock& block : blocks)
        if (block.count > 0 && block.problem.isEmpty())
            block.problem = QStringLiteral("reading or writing block %1, which lies before the beginning of "
                                           "the file, ends all reading and writing of the file")
                                .arg(beforeFile->number);
}

/// Lists in every block the entries that went into it: those that begin in it or, folded away, right behind
/// it.
void nameEntries(const std::vector<ProjectEntry>& entries, AreaLayout& layout)
{
    for (LayoutBlock& block : layout.blocks)
        if (block.count <= 0)
            block.entries.push_back(block.maker);
    for (const ProjectEntry& entry : entries)
        if (entry.area == layout.area && entry.length > 0)
            if (LayoutBlock* const block = layout.blockOf(entry))
                block->entries.push_back(entry.number);
}

/// Length of a new file: sums wrap as the module's do; a negative length makes an empty file.
qint64 newFileLength(const AreaFacts& area, const std::vector<LayoutBlock>& blocks)
{
    quint32 total = 0;
    for (const LayoutBlock& block : blocks)
        total += static_cast<quint32>(block.count);
    const int cells = static_cast<int>(total);
    const int length = area.bits ? cells / 8 + 1 : static_cast<int>(total * 2);
    return std::max(0, length);
}

CellRanges keptCells(const AreaLayout& layout, bool images)
{
    std::vector<CellRange> cells;
    for (const LayoutBlock& block : layout.blocks)
        if (block.problem.isEmpty())
            cells.push_back({block.first, block.last()});
    CellRanges kept = CellRanges(std::move(cells)).within({0, cellCount(*layout.area) - 1});
    if (layout.area->bits && !images)
        kept = kept.minus(CellRanges({{unwrittenBit, unwrittenBit}}));
    return kept;
}

AreaLayout perAddressLayout(const ProjectSettings& settings, const AreaFacts& area)
{
    AreaLayout layout;
    layout.area = &area;
    for (const MaintenanceFileInfo& info : moduleBlocks(settings, area)) {
        LayoutBlock block;
        block.number = static_cast<int>(layout.blocks.size()) + 1;
        block.first = info.address.index;
        block.count = info.count;
        block.byte = info.fileOffset;
        block.bit = info.bitOffset;
        block.maker = info.address.spareText.toInt();
        layout.blocks.push_back(block);
    }
    for (std::size_t i = 0; i < layout.blocks.size(); ++i)
        if (layout.blocks[i].count > 0)
            layout.filled.push_back(i);
    markProblems(layout.blocks, area.bits);
    nameEntries(settings.entries, layout);
    layout.fileLength = newFileLength(area, layout.blocks);
    return layout;
}

} // namespace

LayoutBlock* AreaLayout::blockOf(const ProjectEntry& entry)
{
    const auto after =
        std::upper_bound(filled.begin(), filled.end(), entry.first(),
                         [this](qint64 cell, std::size_t block) { return cell < blocks[block].first; });
    return after == filled.begin() ? nullptr : &blocks[*(after - 1)];
}

const LayoutBlock* AreaLayout::blockOf(const ProjectEntry& entry) const
{
    return const_cast<AreaLayout*>(this)->blockOf(entry);
}

Layout makeLayout(ProjectSettings settings)
{
    Layout result;
    result.settings = std::move(settings);
    for (const AreaFacts& area : areaFacts) {
        AreaLayout& layout = result.areas[&area - areaFacts];
        if (result.images()) {
            layout.area = &area;
            layout.blocks.push_back(wholeArea(area));
            layout.fileLength = area.imageBytes;
        } else {
            layout = perAddressLayout(result.settings, area);
        }
        for (const LayoutBlock& block : layout.blocks)
            layout.cells += block.count;
        layout.kept = keptCells(layout, result.images());
    }
    return result;
}
