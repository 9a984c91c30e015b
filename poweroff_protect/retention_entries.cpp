// The per-address entries of the project: read, sorted by area, and turned into the block lists.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/poweroff_protect.h"
#include "poweroff_protect/retention_area.h"

#include <algorithm>

namespace {

structMaintenance readEntry(object* node)
{
    object* const source = object_get_child(node, "sourceAddress");
    structMaintenance entry;
    entry.addressLength = object_get_property_value_type_int32(node, "addressLength", 0);
    entry.addressType = object_get_property_value_type_string(node, "addressType", QString());
    entry.address.link = object_get_property_value_type_string(source, "Link", QString());
    entry.address.block = object_get_property_value_type_string(source, "Block", QString());
    entry.address.number = object_get_property_value_type_string(source, "No", QString());
    entry.address.index = object_get_property_value_type_int32(source, "index", 0);
    entry.address.station = object_get_property_value_type_int32(source, "station", 0);
    entry.address.length = object_get_property_value_type_int32(source, "length", 0);
    entry.address.bitOrWord = object_get_property_value_type_int32(source, "Bit_or_Word", 0);
    return entry;
}

} // namespace

void poweroff_protect::initAddrInfo()
{
    QVector<structMaintenance> entries[3]; // one for each row of RetentionArea::all
    object* const retention = object_get_child(projectObject, "DataRetention");
    for (object* node = retention ? object_first_child(retention) : nullptr; node; node = object_next(node)) {
        const structMaintenance entry = readEntry(node);
        if (const RetentionArea* const area = RetentionArea::named(entry.address.block))
            entries[area - RetentionArea::all].append(entry);
    }

    // Made aside: without memory for all of them the module keeps no half-placed blocks.
    QList<MaintenanceFileInfo> blocks[3];
    for (int k = 0; k < 3; ++k) {
        std::sort(entries[k].begin(), entries[k].end(), compare);
        memoryPartition(entries[k], blocks[k]);
        fileMemoryMap(blocks[k]);
    }
    for (int k = 0; k < 3; ++k)
        qSwap(this->*RetentionArea::all[k].blocks, blocks[k]);
}
