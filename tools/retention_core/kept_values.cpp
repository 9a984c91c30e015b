// Decodes and encodes cells, range by range, never more of a block than lies in its area.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/kept_values.h"

#include "poweroff_protect/placement.h"

#include <algorithm>

namespace {

const qint64 strayBytes = 4096; // looked at after the last cell

/// Where a cell lies in its file.
struct CellPlace
{
    qint64 byte;
    int bytes; ///< 2 for a word, low byte first
    int mask;  ///< of its bits in these bytes
};

CellPlace placeOf(const AreaLayout& area, const LayoutBlock& block, qint64 cell)
{
    const qint64 number = cell - block.first();
    if (!area.area->bits)
        return {block.info.fileOffset + 2 * number, 2, 0xffff};
    if (area.image)
        return {number, 1, 0xff};
    const BitPlace place = bitPlace(block.info, static_cast<int>(number));
    return {place.byte, 1, bitMask(place)};
}

std::size_t index(qint64 cell)
{
    return static_cast<std::size_t>(cell);
}

/// The bytes of a file that hold some cells of one block.
class PackedCells
{
public:
    PackedCells(const AreaLayout& layout, const LayoutBlock& of, const CellRange& range)
        : area(layout), block(of), cells(range), offset(placeOf(area, block, cells.first).byte)
    {
        const CellPlace last = placeOf(area, block, cells.last);
        length = last.byte + last.bytes - offset;
    }

    void decode(const RetentionFile& file, AreaValues& result) const
    {
        const QByteArray bytes = file.read(offset, length);
        for (qint64 cell = cells.first; cell <= cells.last; ++cell) {
            const CellPlace place = placeOf(area, block, cell);
            if (place.byte + place.bytes > offset + bytes.size())
                return;
            const int raw = rawAt(bytes, place);
            const int value = raw & place.mask;
            result.values[index(cell)] = static_cast<ushort>(area.area->bits ? value != 0 : value);
            const bool startValue = area.area->bits && !area.image && raw == 0;
            result.states[index(cell)] = startValue ? CellState::StartValue : CellState::Kept;
            result.oddBytes += area.area->bits && area.image && raw > 1;
        }
    }

    bool encode(const std::vector<ushort>& values, QIODevice& device) const
    {
        QByteArray bytes = device.seek(offset) ? device.read(length) : QByteArray();
        if (bytes.size() != length)
            return false;
        for (qint64 cell = cells.first; cell <= cells.last; ++cell) {
            const CellPlace place = placeOf(area, block, cell);
            const int value = values[index(cell)];
            const int bits = area.area->bits && !area.image ? (value ? place.mask : 0) : value;
            const int raw = (rawAt(bytes, place) & ~place.mask) | bits;
            for (int i = 0; i < place.bytes; ++i)
                bytes[static_cast<int>(place.byte - offset) + i] = static_cast<char>(raw >> (8 * i));
        }
        return device.seek(offset) && device.write(bytes) == bytes.size();
    }

private:
    int rawAt(const QByteArray& bytes, const CellPlace& place) const
    {
        int raw = 0;
        for (int i = 0; i < place.bytes; ++i)
            raw |= static_cast<unsigned char>(bytes.at(static_cast<int>(place.byte - offset) + i)) << (8 * i);
        return raw;
    }

    const AreaLayout& area;
    const LayoutBlock& block;
    CellRange cells;
    qint64 offset;
    qint64 length;
};

/// What the area keeps, as parts of its blocks in the order of the file.
std::vector<PackedCells> packedCells(const AreaLayout& area)
{
    std::vector<PackedCells> parts;
    for (const LayoutBlock& block : area.blocks)
        for (const CellRange& kept : area.kept.within(block.cells()))
            parts.emplace_back(area, block, kept);
    return parts;
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
        part.decode(file, result);
    return result;
}

bool writeValues(const AreaLayout& area, const std::vector<ushort>& values, QIODevice& device)
{
    const std::vector<PackedCells> parts = packedCells(area);
    return std::all_of(parts.begin(), parts.end(),
                       [&](const PackedCells& part) { return part.encode(values, device); });
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
            byte >>= end.bit;
        for (; byte != 0; byte &= byte - 1)
            ++bits;
    }
    return bits;
}
