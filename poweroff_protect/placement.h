// Places the blocks of an area in its per-address file.
// SPDX-License-Identifier: MIT
#pragma once

#include "poweroff_protect/maintenance_file_info.h"

#include <QtCore/QList>

/// Lays one area's blocks end to end: sets fileOffset and bitOffset. Any counts pass through; sums wrap.
void placeBlocks(QList<MaintenanceFileInfo>& blocks);

/// The length in bytes of a new file for these blocks; for bits always one byte more than the full ones, and
/// 0 for an unknown code. Sums wrap, so the result may be negative.
int newFileLength(int perAddressCode, const QList<MaintenanceFileInfo>& blocks);

/// A bit of a file: the offset of its byte (negative before the start of the file) and its mask in that byte.
/// Negative counts can leave a negative remainder, which is no bit of any byte: the mask is then 0.
struct BitPlace
{
    int byte, mask;
};

/// The place of the bit that is `number` bits after the first one of `block`. Sums wrap.
BitPlace bitPlace(const MaintenanceFileInfo& block, int number);
