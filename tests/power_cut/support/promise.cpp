// Comparing of restored values with the possible ones.
// SPDX-License-Identifier: MIT
#include "tests/power_cut/support/promise.h"

#include <algorithm>
#include <cstring>

namespace {

const int sectorBytes = 512;

QString valuesText(const std::vector<ushort>& values)
{
    QStringList texts;
    for (const ushort value : values)
        texts.append(QString::number(value));
    return texts.join(QLatin1String(", "));
}

bool sameSector(const unsigned char* sector, const QByteArray& image, int offset)
{
    return std::memcmp(sector, image.constData() + offset, sectorBytes) == 0;
}

} // namespace

bool promisesNothing(const Cell& cell)
{
    return cell.area == 0 && cell.address == 60100;
}

Images imagesOf(const MemoryAreas& areas)
{
    Images images;
    for (std::size_t i = 0; i < images.size(); ++i) {
        const auto& memory = areas.all()[i].memory();
        images[i] = QByteArray(reinterpret_cast<const char*>(memory.data()), static_cast<int>(memory.size()));
    }
    return images;
}

Verdict& Verdict::operator+=(const Verdict& other)
{
    checked += other.checked;
    lost += other.lost;
    return *this;
}

Promise::Promise(const PanelProject& project)
{
    if (project.wholeAreas())
        saved = imagesOf(MemoryAreas());
    for (const CellRange& range : project.ranges)
        for (int j = 0; j < range.count; ++j)
            possible[{range.area, range.first + j}] = {0};
}

void Promise::give(const Change& change)
{
    const auto found = possible.find(change.cell);
    if (found != possible.end())
        found->second.push_back(change.value);
}

void Promise::keep(const Cell& cell)
{
    const auto found = possible.find(cell);
    if (found == possible.end() || promisesNothing(cell))
        return;
    std::vector<ushort>& values = found->second;
    values.erase(values.begin(), values.end() - 1);
}

void Promise::beginSave(const Images& images)
{
    underWay = images;
}

void Promise::completeSave()
{
    saved = underWay;
    underWay.reset();
}

void Promise::restart(const MemoryAreas& restored)
{
    for (auto& [cell, values] : possible)
        values = {*restored.all()[static_cast<std::size_t>(cell.area)].cell(cell.address)};
    if (saved)
        saved = imagesOf(restored);
    underWay.reset();
}

Verdict Promise::check(const MemoryAreas& restored) const
{
    Verdict verdict;
    if (saved)
        checkSectors(restored, verdict);
    else
        checkCells(restored, verdict);
    return verdict;
}

void Promise::checkCells(const MemoryAreas& restored, Verdict& verdict) const
{
    MemoryAreas others = restored;
    for (const auto& [cell, values] : possible) {
        const auto area = static_cast<std::size_t>(cell.area);
        const ushort value = *restored.all()[area].cell(cell.address);
        others.all()[area].setCell(cell.address, 0);
        if (std::find(values.begin(), values.end(), value) == values.end())
            verdict.lost.append(QStringLiteral("%1 %2 came back as %3, possible were %4")
                                    .arg(QLatin1String(areaNames[area]))
                                    .arg(cell.address)
                                    .arg(value)
                                    .arg(valuesText(values)));
    }
    verdict.checked += static_cast<qint64>(possible.size());
    for (const MemoryArea& area : others.all()) {
        const auto& memory = area.memory();
        const auto touched = std::find_if(memory.begin(), memory.end(), [](unsigned char b) { return b; });
        if (touched != memory.end())
            verdict.lost.append(QStringLiteral("%1: the start wrote outside the retained cells, at byte %2")
                                    .arg(area.name())
                                    .arg(touched - memory.begin()));
    }
}

void Promise::checkSectors(const MemoryAreas& restored, Verdict& verdict) const
{
    for (std::size_t i = 0; i < 3; ++i) {
        const auto& memory = restored.all()[i].memory();
        for (int offset = 0; offset < static_cast<int>(memory.size()); offset += sectorBytes) {
            ++verdict.checked;
            const unsigned char* const sector = memory.data() + offset;
            if (!sameSector(sector, (*saved)[i], offset) &&
                !(underWay && sameSector(sector, (*underWay)[i], offset)))
                verdict.lost.append(
                    QStringLiteral("%1: sector %2 is neither that of the last save nor that of a save "
                                   "under way")
                        .arg(QLatin1String(areaNames[i]))
                        .arg(offset / sectorBytes));
        }
    }
}

Verdict LengthPromise::check(const Lengths& lengths) const
{
    Verdict verdict;
    for (const auto& [name, length] : least) {
        const auto found = lengths.find(name);
        const qint64 now = found == lengths.end() ? -1 : found->second;
        if (now < length)
            verdict.lost.append(
                now < 0 ? QStringLiteral("%1 is gone").arg(name)
                        : QStringLiteral("%1 is %2 bytes long, it had %3").arg(name).arg(now).arg(length));
    }
    return verdict;
}
