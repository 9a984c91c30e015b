// Places the blocks of an area in its per-address file.
// SPDX-License-Identifier: MIT
#pragma once

#include "poweroff_protect/maintenance_file_info.h"

#include <QtCore/QList>

/// Sets fileOffset and bitOffset of one area's blocks, end to end. Any counts pass through, sums wrap.
void placeBlocks(QList<MaintenanceFileInfo>& blocks);

/// Bytes of a new file for these blocks: always one more byte than full ones for bits, 0 for an unknown code.
/// Sums wrap, so the result may be negative.
int newFileLength(int perAddressCode, const QList<MaintenanceFileInfo>& blocks);

/// A bit of a file: its byte, counted from the start of the file or negative before it, and its mask in that
/// byte. The mask is 0 where negative counts leave a negative remainder, which is no bit of any byte.
struct BitPlace
{
    int byte, mask;
};

/// Where bit number `number` after the first bit of `block` lies. Sums wrap.
BitPlace bitPlace(const MaintenanceFileInfo& block, int number);
