// Folds one area's sorted entries into ranges.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/partition.h"

#include "poweroff_protect/wrapping.h"

QVector<KeptRange> partition(const QVector<structMaintenance>& entries)
{
    QVector<KeptRange> ranges;
    if (entries.isEmpty())
        return ranges;
    KeptRange range = {0, entries.at(0).addressLength}; // not finished yet
    for (int k = 1; k < entries.size(); ++k) {
        const structMaintenance& next = entries.at(k);
        const int start = entries.at(range.entry).address.index;
        const int end = wrapAdd(start, range.count);
        const int nextStart = next.address.index;
        const int nextEnd = wrapAdd(nextStart, next.addressLength);
        const KeptRange nextAlone = {k, next.addressLength};
        if (start < nextStart ? end <= nextStart : start > nextStart && nextEnd <= start) {
            ranges.append(range);
            range = nextAlone;
        } else if (start < nextStart) {
            if (nextEnd >= end)
                range.count = wrapSubtract(wrapSubtract(nextEnd, 1), start); // one cell short of the union
        } else if (start == nextStart) {
            if (range.count < next.addressLength)
                range = nextAlone;
        } else if (wrapAdd(nextStart, next.address.length) > end) { // the address's length, not the entry's
            range = nextAlone;
        } else {
            range.count = wrapSubtract(wrapSubtract(end, 1), nextStart);
        }
    }
    ranges.append(range);
    return ranges;
}
