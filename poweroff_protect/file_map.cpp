// File memory map: where each block of an area lies in the area's file.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/poweroff_protect.h"
#include "poweroff_protect/retention_area.h"

void poweroff_protect::fileMemoryMap(QList<MaintenanceFileInfo>& blocks)
{
    int byte = 0;
    int bit = 0;
    for (int k = 0; k < blocks.size(); ++k) {
        MaintenanceFileInfo& block = blocks[k];
        block.fileOffset = byte;
        block.bitOffset = bit;
        const RetentionArea* const area = RetentionArea::named(block.address.block);
        if (!area)
            continue;
        if (area->bits) {
            // Only an overflow is carried: negative counts may leave a negative bit offset.
            byte += block.count / 8;
            bit += block.count % 8;
            if (bit > 7) {
                bit -= 8;
                ++byte;
            }
        } else {
            byte += 2 * block.count;
        }
    }
}
