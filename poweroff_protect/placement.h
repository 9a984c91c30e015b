// Places the blocks of an area in its per-address file.
// SPDX-License-Identifier: MIT
#ifndef POWEROFF_PROTECT_PLACEMENT_H
#define POWEROFF_PROTECT_PLACEMENT_H

#include "poweroff_protect/area_facts.h"
#include "poweroff_protect/maintenance_file_info.h"

#include <QtCore/QList>

/// Sets fileOffset and bitOffset of one area's blocks, which lie end to end. Any counts pass through, sums
/// wrap.
void placeBlocks(QList<MaintenanceFileInfo>& blocks);

/// Bytes of a new file for these blocks: one more than needed where bits fill the last byte; 0 without an
/// area. Sums wrap, so the result may be negative.
int newFileLength(const AreaFacts* area, const QList<MaintenanceFileInfo>& blocks);

/// A bit of a file.
struct BitPlace
{
    int byte; ///< offset in bytes; negative values lie before the file
    int bit;  ///< 0 (least significant) to 7; a negative one, which only negative counts bring, is no bit of
              ///< any byte
};

/// Where bit number `number` after the first bit of `block` lies. Sums wrap.
BitPlace bitPlace(const MaintenanceFileInfo& block, int number);

/// The mask of a bit in its byte; 0 for a bit that is none.
inline int bitMask(const BitPlace& place)
{
    return place.bit < 0 ? 0 : 1 << place.bit;
}

#endif
