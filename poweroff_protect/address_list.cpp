// Turns the project's entries into the three block lists.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/area_fields.h"
#include "poweroff_protect/partition.h"
#include "poweroff_protect/placement.h"
#include "poweroff_protect/poweroff_protect.h"
#include "poweroff_protect/retention_settings.h"

#include <algorithm>

void poweroff_protect::initAddrInfo()
{
    QVector<structMaintenance> entries[areaCount];
    object* const retention = retentionObject(projectObject);
    for (object* child = retention ? object_first_child(retention) : nullptr; child;
         child = object_next(child)) {
        const structMaintenance entry = readRetentionEntry(child);
        if (const AreaFacts* const area = areaNamed(entry.address.block))
            entries[area - areaFacts].append(entry);
    }

    // Built in local lists, so that a failed allocation leaves no half-placed blocks in the module.
    QList<MaintenanceFileInfo> blocks[areaCount];
    for (int k = 0; k < areaCount; ++k) {
        std::sort(entries[k].begin(), entries[k].end(), compare);
        memoryPartition(entries[k], blocks[k]);
        fileMemoryMap(blocks[k]);
    }
    for (const AreaFields& area : AreaFields::of(*this))
        qSwap(area.blocks, blocks[&area.facts - areaFacts]);
}

void poweroff_protect::memoryPartition(QVector<structMaintenance>& entries,
                                       QList<MaintenanceFileInfo>& blocks)
{
    const QVector<KeptRange> ranges = partition(entries);
    for (const KeptRange& range : ranges) {
        MaintenanceFileInfo block;
        block.address = entries.at(range.entry).address;
        block.count = range.count;
        blocks.append(block);
    }
}

void poweroff_protect::fileMemoryMap(QList<MaintenanceFileInfo>& blocks)
{
    placeBlocks(blocks);
}
