// Counts pages that writes touch, and the writes that a flash survives.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/wear_model.h"

#include <algorithm>

namespace {

const qint64 kilo = 1024;
const qint64 mega = 1024 * kilo;
const qint64 giga = 1024 * mega;

/// Pages that some bytes of a file touch. Files begin with a page.
qint64 touchedPages(const Flash& flash, qint64 offset, qint64 length)
{
    return length <= 0 ? 0 : (offset + length - 1) / flash.page - offset / flash.page + 1;
}

/// The piece that a change of a cell writes: of a bit its byte, of a word its block.
WrittenPiece pieceOf(const AreaLayout& area, const LayoutBlock& block, const Flash& flash)
{
    WrittenPiece piece;
    piece.area = &area;
    piece.block = &block;
    piece.cells = area.kept.within(block.cells());
    piece.fileBytes = area.area->bits ? 1 : qint64(2) * block.info.count;
    piece.filePages = area.area->bits ? 1 : touchedPages(flash, block.info.fileOffset, piece.fileBytes);
    return piece;
}

WriteCase saveOfAll(const Layout& layout, const Flash& flash)
{
    WriteCase save = {WriteCase::Kind::Save, 0, 0, static_cast<double>(flash.fileSystemPages)};
    for (const AreaLayout& area : layout.areas) {
        save.fileBytes += static_cast<double>(area.fileLength);
        save.filePages += static_cast<double>(touchedPages(flash, 0, area.fileLength));
    }
    return save;
}

} // namespace

const std::vector<Medium> media = {
    {"sd", "SD card", "its controller", {16 * kilo, 4 * mega, 2, 8 * giga, 1000}},
    {"emmc", "eMMC", "its controller", {16 * kilo, 4 * mega, 2, 4 * giga, 3000}},
    {"nor", "serial NOR flash", "UBIFS or JFFS2", {256, 64 * kilo, 1, 16 * mega, 100000}},
    {"nand", "raw NAND flash", "UBIFS", {2 * kilo, 128 * kilo, 2, 128 * mega, 50000}},
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
    WriteCase even = {WriteCase::Kind::Even, 0, 0, systemPages};
    double cells = 0;
    for (const WrittenPiece& piece : pieces) {
        const auto changes = static_cast<double>(piece.cells.count());
        even.fileBytes += changes * static_cast<double>(piece.fileBytes);
        even.filePages += changes * static_cast<double>(piece.filePages);
        cells += changes;
    }
    even.fileBytes /= cells;
    even.filePages /= cells;
    // A smaller block that crosses into another page costs more than a larger one inside a page.
    const auto worst =
        std::max_element(pieces.begin(), pieces.end(), [](const WrittenPiece& a, const WrittenPiece& b) {
            return a.filePages != b.filePages ? a.filePages < b.filePages : a.fileBytes < b.fileBytes;
        });
    return {even,
            {WriteCase::Kind::Worst, static_cast<double>(worst->fileBytes),
             static_cast<double>(worst->filePages), systemPages, worst->block, worst->area->area}};
}

double writesLevelled(const Flash& flash, const WriteCase& each)
{
    const double bytes = each.flashBytes(flash);
    return bytes > 0 ? flash.enduranceCycles * static_cast<double>(flash.capacity) / bytes : 0;
}

double writesInPlace(const Flash& flash)
{
    return flash.enduranceCycles;
}
