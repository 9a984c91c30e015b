// Counts pages that writes touch, and the writes that a flash survives.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/wear_model.h"

#include <algorithm>

namespace {

const qint64 kilo = 1024;
const qint64 mega = 1024 * kilo;
const qint64 giga = 1024 * mega;

const qint64 fileBlock = 4 * kilo; // a file system writes a file in pieces of this size, except at its end

/// The number of pages filled by those blocks of a file that contain the changed bytes. Files start on a page
/// boundary.
qint64 filledPages(qint64 page, qint64 offset, qint64 length, qint64 fileLength)
{
    if (length <= 0)
        return 0;
    const qint64 begin = offset / fileBlock * fileBlock;
    const qint64 blocksEnd = (offset + length + fileBlock - 1) / fileBlock * fileBlock;
    const qint64 end = std::min(blocksEnd, std::max(fileLength, offset + length));
    return (end - 1) / page - begin / page + 1;
}

/// The same in bytes, as the file system sends them: in pages, or blocks if these are smaller.
qint64 sentOfFile(const Flash& flash, qint64 offset, qint64 length, qint64 fileLength)
{
    const qint64 piece = std::min(flash.page, fileBlock);
    return piece * filledPages(piece, offset, length, fileLength);
}

/// The piece that a change of a cell writes: for a bit its byte, for a word its block.
WrittenPiece pieceOf(const AreaLayout& area, const LayoutBlock& block, const Flash& flash)
{
    WrittenPiece piece;
    piece.area = &area;
    piece.block = &block;
    piece.cells = area.kept.within(block.cells());
    const bool bits = area.area->bits;
    piece.fileBytes = bits ? 1 : qint64(2) * block.info.count;
    piece.filePages = filledPages(flash.page, block.info.fileOffset, piece.fileBytes, area.fileLength);
    piece.sentBytes = sentOfFile(flash, block.info.fileOffset, piece.fileBytes, area.fileLength);
    return piece;
}

WriteCase saveOfAll(const Layout& layout, const Flash& flash)
{
    WriteCase save = {WriteCase::Kind::Save, 0, 0, static_cast<double>(flash.fileSystemPages),
                      static_cast<double>(flash.fileSystemBytes)};
    for (const AreaLayout& area : layout.areas) {
        save.fileBytes += static_cast<double>(area.fileLength);
        save.filePages += static_cast<double>(filledPages(flash.page, 0, area.fileLength, area.fileLength));
        save.sentBytes += static_cast<double>(sentOfFile(flash, 0, area.fileLength, area.fileLength));
    }
    return save;
}

} // namespace

const std::vector<Medium> media = {
    // ext4 with a journal sends its own part of a change or save in three requests, 16 KiB in all.
    {"sd", "SD card with ext4", "its controller", {16 * kilo, 4 * mega, 3, 8 * giga, 1000, 16 * kilo}},
    {"emmc", "eMMC with ext4", "its controller", {16 * kilo, 4 * mega, 3, 4 * giga, 3000, 16 * kilo}},
    // "sync" makes UBIFS commit its index, which frees an erase block of its log each time.
    {"nor", "serial NOR flash with UBIFS", "UBI", {256, 64 * kilo, 6, 16 * mega, 100000, 1536, 1}},
    {"nand", "raw NAND flash with UBIFS", "UBI", {2 * kilo, 128 * kilo, 7, 128 * mega, 50000, 14 * kilo, 1}},
};

std::vector<WrittenPiece> writtenPieces(const Layout& layout, const Flash& flash)
{
    std::vector<WrittenPiece> pieces;
    for (const AreaLayout& area : layout.areas) {
        for (const LayoutBlock& block : area.blocks) {
            WrittenPiece piece = pieceOf(area, block, flash);
            if (!piece.cells.isEmpty())
                pieces.push_back(std::move(piece));
        }
    }
    return pieces;
}

std::vector<WriteCase> writeCases(const Layout& layout, const Flash& flash)
{
    if (layout.settings.mode == RetentionMode::WholeAreas)
        return {saveOfAll(layout, flash)};
    const auto systemPages = static_cast<double>(flash.fileSystemPages);
    const std::vector<WrittenPiece> pieces = writtenPieces(layout, flash);
    if (pieces.empty())
        return {};
    const auto systemBytes = static_cast<double>(flash.fileSystemBytes);
    WriteCase even = {WriteCase::Kind::Even, 0, 0, systemPages, 0};
    double cells = 0;
    for (const WrittenPiece& piece : pieces) {
        const auto changes = static_cast<double>(piece.cells.count());
        even.fileBytes += changes * static_cast<double>(piece.fileBytes);
        even.filePages += changes * static_cast<double>(piece.filePages);
        even.sentBytes += changes * static_cast<double>(piece.sentBytes);
        cells += changes;
    }
    even.fileBytes /= cells;
    even.filePages /= cells;
    even.sentBytes = even.sentBytes / cells + systemBytes;
    // A smaller block that crosses into another page costs more than a larger one inside a page.
    const auto worst =
        std::max_element(pieces.begin(), pieces.end(), [](const WrittenPiece& a, const WrittenPiece& b) {
            return a.filePages != b.filePages ? a.filePages < b.filePages : a.fileBytes < b.fileBytes;
        });
    return {even,
            {WriteCase::Kind::Worst, static_cast<double>(worst->fileBytes),
             static_cast<double>(worst->filePages), systemPages,
             static_cast<double>(worst->sentBytes) + systemBytes, worst->block, worst->area->area}};
}

double writesPerDay(const Layout& layout, double changesPerHour)
{
    if (!layout.images())
        return changesPerHour * hoursPerDay;
    const int minutes = layout.settings.saveTimeMinutes;
    return minutes > 0 ? hoursPerDay * minutesPerHour / minutes : 0;
}

double writesLevelled(const Flash& flash, const WriteCase& each)
{
    const double blocks = static_cast<double>(flash.capacity) / static_cast<double>(flash.eraseBlock);
    return flash.enduranceCycles * blocks / each.erasures(flash);
}

double writesInPlace(const Flash& flash)
{
    return flash.enduranceCycles;
}

double writesSurvived(const Flash& flash, const WriteCase& each)
{
    return flash.levelled() ? writesLevelled(flash, each) : writesInPlace(flash);
}

double yearsOf(double writes, double perDay)
{
    return perDay > 0 ? writes / perDay / daysPerYear : 0;
}
