// Lays blocks end to end: bits packed, two bytes for each word.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/placement.h"

#include "poweroff_protect/area_facts.h"
#include "poweroff_protect/wrapping.h"

void placeBlocks(QList<MaintenanceFileInfo>& blocks)
{
    int byte = 0;
    int bit = 0;
    for (int k = 0; k < blocks.size(); ++k) {
        MaintenanceFileInfo& block = blocks[k];
        block.fileOffset = byte;
        block.bitOffset = bit;
        const AreaFacts* const area = areaNamed(block.address.block);
        if (area && area->bits) {
            byte = wrapAdd(byte, block.count / 8);
            bit += block.count % 8;
            if (bit > 7) { // the only carry: a negative count may leave a negative bit offset
                bit -= 8;
                byte = wrapAdd(byte, 1);
            }
        } else if (area) {
            byte = wrapAdd(byte, wrapAdd(block.count, block.count));
        }
    }
}

int newFileLength(int perAddressCode, const QList<MaintenanceFileInfo>& blocks)
{
    int cells = 0;
    for (int k = 0; k < blocks.size(); ++k)
        cells = wrapAdd(cells, blocks.at(k).count);
    for (const AreaFacts& area : areaFacts)
        if (area.perAddressCode == perAddressCode)
            return area.bits ? cells / 8 + 1 : wrapAdd(cells, cells);
    return 0;
}

BitPlace bitPlace(const MaintenanceFileInfo& block, int number)
{
    const int bit = wrapAdd(number, block.bitOffset);
    return {wrapAdd(block.fileOffset, bit / 8), bit % 8 < 0 ? 0 : 1 << (bit % 8)};
}
