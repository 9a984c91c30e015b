// Partition: one area's sorted entries become its blocks.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/poweroff_protect.h"

namespace {

void appendBlock(QList<MaintenanceFileInfo>& blocks, const _ADDRESS_& address, int count)
{
    MaintenanceFileInfo block;
    block.address = address;
    block.count = count;
    blocks.append(block);
}

} // namespace

void poweroff_protect::memoryPartition(QVector<structMaintenance>& entries,
                                       QList<MaintenanceFileInfo>& blocks)
{
    if (entries.isEmpty())
        return;
    // The block in the making is the entry it began with and its own count, so that no 440-byte entry is
    // copied.
    const structMaintenance* first = entries.constData();
    int count = first->addressLength;
    for (int k = 1; k < entries.size(); ++k) {
        const structMaintenance& next = entries.at(k);
        const int start = first->address.index;
        const int end = start + count;
        const int nextStart = next.address.index;
        const int nextEnd = nextStart + next.addressLength;
        bool takeNext = false;
        if (start < nextStart) {
            if (end <= nextStart) {
                appendBlock(blocks, first->address, count);
                takeNext = true;
            } else if (nextEnd >= end) {
                count = nextEnd - 1 - start; // one cell short of the union
            }
        } else if (start == nextStart) {
            takeNext = count < next.addressLength;
        } else if (nextEnd <= start) {
            appendBlock(blocks, first->address, count);
            takeNext = true;
        } else if (nextStart + next.address.length > end) { // the address's length, not the entry's
            takeNext = true;
        } else {
            count = end - 1 - nextStart;
        }
        if (takeNext) {
            first = &next;
            count = next.addressLength;
        }
    }
    appendBlock(blocks, first->address, count);
}
