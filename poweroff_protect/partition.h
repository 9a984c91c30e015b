// Decides which cells of an area's entries are kept together.
// SPDX-License-Identifier: MIT
#pragma once

#include "define_header/address_records.h"

#include <QtCore/QVector>

/// Cells that become one block: `count` of them (any value) from the address of the entry number `entry` on.
struct KeptRange
{
    int entry; ///< index into the entries
    int count; ///< number of cells
};

/// Turns one area's entries, sorted by compare(), into ranges. Overlapping entries become one range, which is
/// one cell short when the later entry reaches to the end of the earlier one or past it; adjacent entries
/// stay apart. Any values pass through; sums wrap.
QVector<KeptRange> partition(const QVector<structMaintenance>& entries);
