// Decodes and encodes cells range by range, and of each block only what lies in its area.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/kept_values.h"

#include "poweroff_protect/placement.h"

#include <algorithm>

FilePlace filePlace(const AreaLayout& area, const LayoutBlock& block, qint64 cell)
{
    const qint64 number = cell - block.first();
    if (!area.area->bits)
        return {block.info.fileOffset + 2 * number, 2, 0xffff};
    if (area.image)
        return {number, 1, 0xff};
    const BitPlace place = bitPlace(block.info, static_cast<int>(number));
    return {place.byte, 1, place.mask};
}

namespace {

const qint64 strayBytes = 4096; // looked at after the last cell

std::size_t index(qint64 cell)
{
    return static_cast<std::size_t>(cell);
}

/// Cells of one block that the area keeps, and the bytes of the file that hold them.
struct PackedCells
{
    const LayoutBlock& block;
    CellRange cells;
    qint64 offset;
    qint64 length;
};

/// Everything that the area keeps, in the order of the file.
std::vector<PackedCells> packedCells(const AreaLayout& area)
{
    std::vector<PackedCells> parts;
    for (const LayoutBlock& block : area.blocks) {
        for (const CellRange& cells : area.kept.within(block.cells())) {
            const qint64 offset = filePlace(area, block, cells.first).byte;
            const FilePlace last = filePlace(area, block, cells.last);
            parts.push_back({block, cells, offset, last.byte + last.bytes - offset});
        }
    }
    return parts;
}

int rawAt(const QByteArray& bytes, qint64 at, int count)
{
    int raw = 0;
    for (int i = 0; i < count; ++i)
        raw |= static_cast<unsigned char>(bytes.at(static_cast<int>(at) + i)) << (8 * i);
    return raw;
}

void decodeBits(const AreaLayout& area, const PackedCells& part, const QByteArray& bytes, AreaValues& result)
{
    for (qint64 cell = part.cells.first; cell <= part.cells.last; ++cell) {
        const FilePlace place = filePlace(area, part.block, cell);
        const qint64 at = place.byte - part.offset;
        if (at >= bytes.size())
            return;
        const int raw = rawAt(bytes, at, 1);
        result.values[index(cell)] = static_cast<ushort>((raw & place.mask) != 0);
        result.states[index(cell)] = raw == 0 ? CellState::StartValue : CellState::Kept;
    }
}

/// Adjacent cells of one or two whole bytes each, all read in one call: there may be thousands of images.
void decodeBytes(const AreaFacts& area, const PackedCells& part, const QByteArray& bytes, AreaValues& result)
{
    const int cellBytes = area.bits ? 1 : 2;
    const qint64 cells = std::min(part.cells.last - part.cells.first + 1, qint64(bytes.size() / cellBytes));
    const auto* const raw = reinterpret_cast<const unsigned char*>(bytes.constData());
    ushort* const values = result.values.data() + part.cells.first;
    for (qint64 i = 0; i < cells; ++i)
        values[i] = static_cast<ushort>(area.bits ? raw[i] != 0 : raw[2 * i] | raw[2 * i + 1] << 8);
    std::fill_n(result.states.begin() + part.cells.first, cells, CellState::Kept);
    if (bytes.size() % cellBytes != 0) {
        values[cells] = raw[bytes.size() - 1];
        result.states[index(part.cells.first + cells)] = CellState::HalfWord;
    }
    if (area.bits)
        result.oddBytes += std::count_if(raw, raw + cells, [](unsigned char byte) { return byte > 1; });
}

void decode(const AreaLayout& area, const PackedCells& part, const QByteArray& bytes, AreaValues& result)
{
    if (area.area->bits && !area.image)
        decodeBits(area, part, bytes, result);
    else
        decodeBytes(*area.area, part, bytes, result);
}

void encode(const AreaLayout& area, const PackedCells& part, const std::vector<ushort>& values,
            QByteArray& bytes)
{
    for (qint64 cell = part.cells.first; cell <= part.cells.last; ++cell) {
        const FilePlace place = filePlace(area, part.block, cell);
        const auto at = static_cast<int>(place.byte - part.offset);
        const int value = values[index(cell)];
        const int stored = area.area->bits && !area.image && value != 0 ? place.mask : value;
        const int raw = (rawAt(bytes, at, place.bytes) & ~place.mask) | stored;
        for (int i = 0; i < place.bytes; ++i)
            bytes[at + i] = static_cast<char>(raw >> (8 * i));
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
    if (area.image && file.size < area.fileLength)
        return result; // the next start empties the file
    for (const PackedCells& part : packedCells(area))
        decode(area, part, file.read(part.offset, part.length), result);
    return result;
}

bool writeValues(const AreaLayout& area, const std::vector<ushort>& values, QIODevice& device)
{
    for (const PackedCells& part : packedCells(area)) {
        QByteArray bytes = device.seek(part.offset) ? device.read(part.length) : QByteArray();
        if (bytes.size() != part.length)
            return false;
        encode(area, part, values, bytes);
        if (!device.seek(part.offset) || device.write(bytes) != part.length)
            return false;
    }
    return true;
}

qint64 strayBits(const Layout& layout, const RetentionFile& file)
{
    const AreaLayout& area = layout.of(*file.area);
    if (!area.area->bits || area.image || !area.problem.isEmpty())
        return 0;
    const BitPlace end = bitPlace(MaintenanceFileInfo(), static_cast<int>(area.cells));
    const QByteArray bytes = file.read(end.byte, strayBytes);
    qint64 bits = 0;
    for (int i = 0; i < bytes.size(); ++i) {
        unsigned int byte = static_cast<unsigned char>(bytes.at(i));
        if (i == 0)
            byte &= ~(static_cast<unsigned int>(end.mask) - 1);
        for (; byte != 0; byte &= byte - 1)
            ++bits;
    }
    return bits;
}
