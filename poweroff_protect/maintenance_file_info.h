// Describes one block of a per-address retention file.
// SPDX-License-Identifier: MIT
#pragma once

#include "define_header/define_header.h"

/// A run of consecutive cells of one area that lies contiguously in the area's retention file: the cells
/// address.index to address.index + count - 1 of the area named by address.block. A value type.
struct MaintenanceFileInfo
{
    _ADDRESS_ address;  ///< of the entry that the block was made from
    int bitOffset = 0;  ///< bit of the first cell in its byte, 0 to 7; 0 in word files
    int fileOffset = 0; ///< bytes from the start of the file to the first cell
    int count = 0;      ///< number of cells: bits for "LB", 16-bit words for "LW" and "RWI"
};
