// Keeps the cells whose changes a model wants reported.
// SPDX-License-Identifier: MIT
#pragma once

#include "host_interface/exchange_records.h"

#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QString>

#include <set>
#include <vector>

/// Consecutive watched cells of one area.
struct WatchedRange
{
    QString area; ///< as the model named it
    int first;    ///< the lowest address
    int last;     ///< the highest address
};

/// The watched cells of any areas; each cell counts once, however often it was requested.
class WatchList
{
public:
    /// Adds the cells of a model's records.
    void add(const QList<RegisterValueChangeSize>& records);

    bool contains(const QString& area, int address) const;

    /// The watched cells as maximal ranges, ordered by area name: "LB", "LW", "RWI".
    std::vector<WatchedRange> ranges() const;

private:
    QHash<QString, std::set<int>> cells;
};

/// The message that reports a change of that cell. Area names longer than its field are truncated.
_ExtendTriggerMsg_t changeMessage(const QString& area, int address);
