// Reads and writes cells, and finds areas.
// SPDX-License-Identifier: MIT
#include "simulated_host/memory_areas.h"

#include <algorithm>
#include <utility>

MemoryArea::MemoryArea(QString name, int areaCode, bool bits)
    : areaName(std::move(name)), code(areaCode), bits(bits), bytes(bits ? cellCount : 2 * cellCount)
{
}

std::optional<ushort> MemoryArea::cell(int address) const
{
    if (address < 0 || address >= cellCount)
        return std::nullopt;
    const auto at = static_cast<std::size_t>(address);
    if (bits)
        return static_cast<ushort>(bytes[at] != 0);
    return static_cast<ushort>(bytes[2 * at] | (bytes[2 * at + 1] << 8));
}

bool MemoryArea::setCell(int address, ushort value)
{
    if (address < 0 || address >= cellCount)
        return false;
    const auto at = static_cast<std::size_t>(address);
    if (bits) {
        bytes[at] = value != 0;
    } else {
        bytes[2 * at] = static_cast<unsigned char>(value & 0xff);
        bytes[2 * at + 1] = static_cast<unsigned char>(value >> 8);
    }
    return true;
}

MemoryAreas::MemoryAreas()
    : areas{MemoryArea(QStringLiteral("LB"), 1, true), MemoryArea(QStringLiteral("LW"), 0, false),
            MemoryArea(QStringLiteral("RWI"), 2, false)}
{
}

MemoryArea* MemoryAreas::named(const QString& name)
{
    return const_cast<MemoryArea*>(std::as_const(*this).named(name));
}

const MemoryArea* MemoryAreas::named(const QString& name) const
{
    const auto found =
        std::find_if(areas.begin(), areas.end(), [&](const MemoryArea& area) { return area.name() == name; });
    return found == areas.end() ? nullptr : &*found;
}

MemoryArea* MemoryAreas::withCode(int areaCode)
{
    const auto found = std::find_if(areas.begin(), areas.end(),
                                    [&](const MemoryArea& area) { return area.areaCode() == areaCode; });
    return found == areas.end() ? nullptr : &*found;
}
