// Reads and writes cells for models, and records each call.
// SPDX-License-Identifier: MIT
#include "simulated_host/simulated_comm.h"

#include "simulated_host/call_log.h"

#include <algorithm>

namespace {

struct Cells
{
    qint64 first;
    qint64 end;
};

/// The cells of a request that lie inside an area.
Cells insideArea(int address, int count)
{
    const qint64 first = std::clamp<qint64>(address, 0, MemoryArea::cellCount);
    const qint64 end = std::clamp<qint64>(qint64(address) + count, first, MemoryArea::cellCount);
    return {first, end};
}

QString requestText(const char* call, const QString& link, const QString& area, int address, int selector,
                    int count)
{
    return QStringLiteral("%1 link=%2 area=%3 address=%4 selector=%5 count=%6")
        .arg(QLatin1String(call), link, area, QString::number(address), QString::number(selector),
             QString::number(count));
}

} // namespace

void* SimulatedComm::getAreaMemory(int areaCode)
{
    logCall([&] { return QStringLiteral("getAreaMemory %1").arg(areaCode); });
    MemoryArea* const area = removedCodes.contains(areaCode) ? nullptr : areas.withCode(areaCode);
    return area ? area->memory().data() : nullptr;
}

int SimulatedComm::writeRegisterValues(const QString& link, const QString& area, int address, int selector,
                                       int count, const ushort* data)
{
    logCall([&] {
        QString line = requestText("writeRegisterValues", link, area, address, selector, count) +
                       QLatin1String(" data=");
        for (int j = 0; j < count; ++j)
            line += (j ? QStringLiteral(",%1") : QStringLiteral("%1")).arg(data[j]);
        return line;
    });
    MemoryArea* const target = areas.named(area);
    if (!target)
        return 0;
    const Cells cells = insideArea(address, count);
    for (qint64 at = cells.first; at < cells.end; ++at)
        target->setCell(static_cast<int>(at), data[at - address]);
    return static_cast<int>(cells.end - cells.first);
}

int SimulatedComm::readRegisterValues(const QString& link, const QString& area, int address, int selector,
                                      int count, ushort* data)
{
    logCall([&] { return requestText("readRegisterValues", link, area, address, selector, count); });
    const MemoryArea* const source = areas.named(area);
    if (!source)
        return 0;
    const Cells cells = insideArea(address, count);
    for (qint64 at = cells.first; at < cells.end; ++at)
        data[at - address] = *source->cell(static_cast<int>(at));
    return static_cast<int>(cells.end - cells.first);
}
