// Reading of kept values: block by block, never more of a block than lies in its area.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/kept_values.h"

#include <algorithm>

namespace {

const qint64 strayBytes = 4096; // looked at behind the last cell

std::size_t index(qint64 cell)
{
    return static_cast<std::size_t>(cell);
}

void readWords(const LayoutBlock& block, const CellRange& cells, const RetentionFile& file,
               AreaValues& result)
{
    const QByteArray bytes =
        file.read(block.byte + 2 * (cells.first - block.first), 2 * (cells.last - cells.first + 1));
    for (int i = 0; i + 1 < bytes.size(); i += 2) {
        const qint64 cell = cells.first + i / 2;
        const int low = static_cast<unsigned char>(bytes.at(i));
        const int high = static_cast<unsigned char>(bytes.at(i + 1));
        result.values[index(cell)] = static_cast<ushort>(low | (high << 8));
        result.states[index(cell)] = CellState::Kept;
    }
}

void readBits(const LayoutBlock& block, const CellRange& cells, const RetentionFile& file, AreaValues& result)
{
    const qint64 firstBit = block.byte * 8 + block.bit + (cells.first - block.first);
    const qint64 lastBit = firstBit + (cells.last - cells.first);
    const QByteArray bytes = file.read(firstBit / 8, lastBit / 8 - firstBit / 8 + 1);
    for (qint64 cell = cells.first; cell <= cells.last; ++cell) {
        const qint64 bit = firstBit + (cell - cells.first);
        const qint64 at = bit / 8 - firstBit / 8;
        if (at >= bytes.size())
            return;
        const int byte = static_cast<unsigned char>(bytes.at(static_cast<int>(at)));
        result.values[index(cell)] = static_cast<ushort>((byte >> (bit % 8)) & 1);
        result.states[index(cell)] = byte == 0 ? CellState::StartValue : CellState::Kept;
    }
}

void readBitImage(const RetentionFile& file, AreaValues& result)
{
    const QByteArray bytes = file.read(0, static_cast<qint64>(result.values.size()));
    for (int i = 0; i < bytes.size(); ++i) {
        const int byte = static_cast<unsigned char>(bytes.at(i));
        result.values[index(i)] = byte != 0;
        result.states[index(i)] = CellState::Kept;
        result.oddBytes += byte > 1;
    }
}

} // namespace

CellRanges AreaValues::cellsIn(CellState state) const
{
    std::vector<CellRange> ranges;
    for (std::size_t cell = 0; cell < states.size(); ++cell) {
        if (states[cell] != state)
            continue;
        const auto at = static_cast<qint64>(cell);
        if (!ranges.empty() && ranges.back().last + 1 == at)
            ranges.back().last = at;
        else
            ranges.push_back({at, at});
    }
    return CellRanges(std::move(ranges));
}

AreaValues areaValues(const Layout& layout, const RetentionFile& file)
{
    const AreaLayout& area = layout.of(*file.area);
    const auto cells = index(cellCount(*area.area));
    AreaValues result;
    result.area = area.area;
    result.values.resize(cells);
    result.states.resize(cells);
    for (const CellRange& kept : area.kept)
        std::fill(result.states.begin() + kept.first, result.states.begin() + kept.last + 1,
                  CellState::NoValue);
    if (layout.images() && file.size < area.fileLength)
        return result; // the next start empties the file
    if (layout.images() && area.area->bits) {
        readBitImage(file, result);
        return result;
    }
    for (const LayoutBlock& block : area.blocks) {
        if (!block.problem.isEmpty())
            continue;
        for (const CellRange& kept : area.kept.within({block.first, block.last()})) {
            if (area.area->bits)
                readBits(block, kept, file, result);
            else
                readWords(block, kept, file, result);
        }
    }
    return result;
}

KeptValues keptValues(const Layout& layout, const RetentionFiles& files)
{
    KeptValues values;
    for (std::size_t i = 0; i < files.size(); ++i)
        values[i] = areaValues(layout, files[i]);
    return values;
}

qint64 strayBits(const Layout& layout, const RetentionFile& file)
{
    const AreaLayout& area = layout.of(*file.area);
    if (!area.area->bits || layout.images() || area.cells < 0)
        return 0;
    const QByteArray bytes = file.read(area.cells / 8, strayBytes);
    qint64 bits = 0;
    for (int i = 0; i < bytes.size(); ++i) {
        unsigned int byte = static_cast<unsigned char>(bytes.at(i));
        if (i == 0)
            byte >>= area.cells % 8;
        for (; byte != 0; byte &= byte - 1)
            ++bits;
    }
    return bits;
}
