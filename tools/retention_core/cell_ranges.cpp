// Joins, subtracts and limits ranges of cells.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/cell_ranges.h"

#include <QtCore/QStringList>

#include <algorithm>
#include <utility>

CellRanges::CellRanges(std::vector<CellRange> ranges)
{
    std::sort(ranges.begin(), ranges.end(),
              [](const CellRange& a, const CellRange& b) { return a.first < b.first; });
    for (const CellRange& range : ranges) {
        if (range.first > range.last)
            continue;
        if (!parts.empty() && range.first <= parts.back().last + 1)
            parts.back().last = std::max(parts.back().last, range.last);
        else
            parts.push_back(range);
    }
}

qint64 CellRanges::count() const
{
    qint64 cells = 0;
    for (const CellRange& range : parts)
        cells += range.last - range.first + 1;
    return cells;
}

bool CellRanges::contains(qint64 cell) const
{
    return !within({cell, cell}).isEmpty();
}

CellRanges CellRanges::within(const CellRange& limits) const
{
    CellRanges result;
    auto at = std::lower_bound(parts.begin(), parts.end(), limits.first,
                               [](const CellRange& range, qint64 cell) { return range.last < cell; });
    for (; at != parts.end() && at->first <= limits.last; ++at)
        result.parts.push_back({std::max(at->first, limits.first), std::min(at->last, limits.last)});
    return result;
}

CellRanges CellRanges::minus(const CellRanges& other) const
{
    std::vector<CellRange> left;
    for (const CellRange& range : parts) {
        qint64 next = range.first;
        for (const CellRange& taken : other.within(range)) {
            left.push_back({next, taken.first - 1});
            next = taken.last + 1;
        }
        left.push_back({next, range.last});
    }
    return CellRanges(std::move(left));
}

QString CellRanges::text() const
{
    QStringList texts;
    for (const CellRange& range : parts)
        texts.append(rangeText(range));
    return texts.join(QLatin1String(", "));
}

QString rangeText(const CellRange& range)
{
    return range.first == range.last ? QString::number(range.first)
                                     : QStringLiteral("%1 to %2").arg(range.first).arg(range.last);
}
