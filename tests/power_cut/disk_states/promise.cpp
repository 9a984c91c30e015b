// Compares what files say with what was promised.
// SPDX-License-Identifier: MIT
#include "tests/power_cut/disk_states/promise.h"

#include <cstring>

namespace {

const int sectorBytes = 512;

bool sameSector(const QByteArray& image, const QByteArray& other, int offset)
{
    return !other.isEmpty() &&
           std::memcmp(image.constData() + offset, other.constData() + offset, sectorBytes) == 0;
}

QString valueText(int value)
{
    return value == nothing ? QStringLiteral("no value") : QString::number(value);
}

} // namespace

void Promise::restart(const Files& files)
{
    underWay.reset();
    changed = 0;
    for (std::size_t area = 0; area < 3; ++area) {
        if (cells->wholeAreas) {
            saved[area] = storedImage(area, files);
            changedSectors[area].assign(static_cast<std::size_t>(saved[area].size() / sectorBytes), false);
            const auto found = files.find(QLatin1String(testAreas[area].fileName));
            repaired[area].clear();
            if (found != files.end() && found->second.size() < saved[area].size())
                repaired[area] = found->second + QByteArray(saved[area].size() - found->second.size(), '\0');
            continue;
        }
        values[area].clear();
        for (const int value : storedCells(area, files, 0, cells->count(area)))
            values[area].push_back({value});
    }
}

void Promise::end()
{
    const Write write = *underWay;
    underWay.reset();
    for (std::size_t i = 0; i < write.values.size(); ++i) {
        Value& value = values[write.area][static_cast<std::size_t>(write.place) + i];
        if (value.kept == write.values[i])
            continue;
        changed += !value.changed;
        value = {write.values[i], value.kept, true};
    }
    if (!write.images)
        return;
    for (std::size_t area = 0; area < 3; ++area) {
        const QByteArray& image = (*write.images)[area];
        for (std::size_t sector = 0; sector < changedSectors[area].size(); ++sector) {
            const bool same = sameSector(image, saved[area], static_cast<int>(sector) * sectorBytes);
            changed += !same && !changedSectors[area][sector];
            changedSectors[area][sector] = changedSectors[area][sector] || !same;
        }
        saved[area] = image;
        repaired[area].clear();
    }
}

QStringList Promise::missingOf(const Write& write, const Files& files) const
{
    QStringList missing;
    const std::vector<int> stored =
        storedCells(write.area, files, write.place, static_cast<int>(write.values.size()));
    for (std::size_t i = 0; i < stored.size(); ++i)
        if (stored[i] != write.values[i])
            missing.append(QStringLiteral("%1 %2 was to be written as %3, its file has %4")
                               .arg(QLatin1String(testAreas[write.area].name))
                               .arg(cells->addressAt(write.area, write.place + static_cast<int>(i)))
                               .arg(write.values[i])
                               .arg(valueText(stored[i])));
    for (std::size_t area = 0; write.images && area < 3; ++area)
        if (storedImage(area, files) != (*write.images)[area])
            missing.append(QStringLiteral("%1 was to be saved, its file has other bytes")
                               .arg(QLatin1String(testAreas[area].name)));
    return missing;
}

Verdict Promise::check(const Files& files, const JudgedBytes& judged) const
{
    Verdict verdict;
    for (std::size_t area = 0; area < 3; ++area) {
        const auto found = judged.find(QLatin1String(testAreas[area].fileName));
        if (cells->wholeAreas)
            checkSectors(area, files, verdict);
        else
            checkCells(area, files, found == judged.end() ? 1 << 30 : static_cast<int>(found->second),
                       verdict);
    }
    return verdict;
}

void Promise::checkCells(std::size_t area, const Files& files, int judgedBytes, Verdict& verdict) const
{
    const int count = cells->count(area);
    const std::vector<int> stored = storedCells(area, files, 0, count);
    for (int place = 0; place < count; ++place) {
        if ((area == 0 ? place / 8 : 2 * place + 1) >= judgedBytes)
            break;
        const Value& value = values[area][static_cast<std::size_t>(place)];
        const int found = stored[static_cast<std::size_t>(place)];
        ++verdict.checked;
        // A new file has a 0 for what was not written yet.
        if (found == value.kept || (value.kept == nothing && found == 0))
            continue;
        if (underWay && underWay->area == area && place >= underWay->place &&
            place < underWay->place + static_cast<int>(underWay->values.size()) &&
            found == underWay->values[static_cast<std::size_t>(place - underWay->place)])
            continue;
        verdict.lost.append(QStringLiteral("%1 %2 comes back as %3, promised was %4%5")
                                .arg(QLatin1String(testAreas[area].name))
                                .arg(cells->addressAt(area, place))
                                .arg(valueText(found), valueText(value.kept),
                                     value.changed && found == value.before
                                         ? QStringLiteral(": that is its value before")
                                         : QString()));
    }
}

void Promise::checkSectors(std::size_t area, const Files& files, Verdict& verdict) const
{
    const QByteArray image = storedImage(area, files);
    const QByteArray next = underWay && underWay->images ? (*underWay->images)[area] : QByteArray();
    for (int offset = 0; offset < image.size(); offset += sectorBytes) {
        ++verdict.checked;
        if (!sameSector(image, saved[area], offset) && !sameSector(image, next, offset) &&
            !sameSector(image, repaired[area], offset))
            verdict.lost.append(
                QStringLiteral("%1: sector %2 is neither that of the last save nor that of a save under way")
                    .arg(QLatin1String(testAreas[area].name))
                    .arg(offset / sectorBytes));
    }
}
