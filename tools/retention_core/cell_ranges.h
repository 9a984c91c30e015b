// Keeps sets of cell addresses as ranges: a range costs the same for one cell as for two billion.
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QString>

#include <vector>

/// The cells `first` to `last`, both included; first <= last.
struct CellRange
{
    qint64 first;
    qint64 last;
};

inline bool operator==(const CellRange& a, const CellRange& b)
{
    return a.first == b.first && a.last == b.last;
}

/// Ascending ranges that neither overlap nor touch. A value type.
class CellRanges
{
public:
    CellRanges() = default;
    /// The union of the ranges, in any order; ranges with first > last are empty.
    explicit CellRanges(std::vector<CellRange> ranges);

    const std::vector<CellRange>& ranges() const& { return parts; }
    const std::vector<CellRange>& ranges() && = delete; // would not outlive the expression
    std::vector<CellRange>::const_iterator begin() const { return parts.begin(); }
    std::vector<CellRange>::const_iterator end() const { return parts.end(); }
    bool isEmpty() const { return parts.empty(); }
    qint64 count() const; ///< number of cells
    bool contains(qint64 cell) const;

    /// The cells that also lie in `limits`.
    CellRanges within(const CellRange& limits) const;
    CellRanges minus(const CellRanges& other) const;

    bool operator==(const CellRanges& other) const { return parts == other.parts; }

    /// Such as "9, 12 to 14"; empty for no cells.
    QString text() const;

private:
    std::vector<CellRange> parts;
};

/// The cells that are in both.
inline CellRanges both(const CellRanges& a, const CellRanges& b)
{
    return a.minus(a.minus(b));
}

/// Such as "9" or "12 to 14".
QString rangeText(const CellRange& range);
