// Keeps watched cells, and builds the messages that report their changes.
// SPDX-License-Identifier: MIT
#include "simulated_host/watch_list.h"

#include <algorithm>
#include <cstring>

void WatchList::add(const QList<RegisterValueChangeSize>& records)
{
    for (const RegisterValueChangeSize& record : records) {
        const int nameLength = static_cast<int>(qstrnlen(record.areaName, sizeof record.areaName));
        std::set<int>& ofArea = cells[QString::fromLatin1(record.areaName, nameLength)];
        for (int j = 0; j < record.changeSize; ++j)
            ofArea.insert(ofArea.end(), record.address + j);
    }
}

bool WatchList::contains(const QString& area, int address) const
{
    const auto ofArea = cells.constFind(area);
    return ofArea != cells.constEnd() && ofArea->count(address) != 0;
}

std::vector<WatchedRange> WatchList::ranges() const
{
    QStringList areas = cells.keys();
    std::sort(areas.begin(), areas.end()); // alphabetical order is the usual order of the three names
    std::vector<WatchedRange> result;
    for (const QString& area : areas) {
        bool open = false;
        for (const int address : cells.value(area)) {
            if (open && address == result.back().last + 1)
                result.back().last = address;
            else
                result.push_back({area, address, address});
            open = true;
        }
    }
    return result;
}

_ExtendTriggerMsg_t changeMessage(const QString& area, int address)
{
    _ExtendTriggerMsg_t message = {};
    message.address = address;
    const QByteArray name = area.toLatin1().left(sizeof message.areaName - 1);
    std::memcpy(message.areaName, name.constData(), static_cast<std::size_t>(name.size()));
    return message;
}
