// Decides which cells of an area's entries are kept together.
// SPDX-License-Identifier: MIT
#pragma once

#include "define_header/address_records.h"

#include <QtCore/QVector>

/// Cells that become one block: `count` of them, any value, from the address of the entry number `entry` on.
struct KeptRange
{
    int entry; ///< place in the entries, from 0
    int count; ///< number of cells
};

/// The ranges of one area's entries, which must be sorted by compare(). Overlapping entries become one range,
/// which is one cell short where the later entry reaches to or past the end of the earlier one; adjacent
/// entries stay apart. Any values pass through, sums wrap.
QVector<KeptRange> partition(const QVector<structMaintenance>& entries);
