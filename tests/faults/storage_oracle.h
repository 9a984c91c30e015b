// What a life leaves behind in one area when one call to storage fails, told without the module.
// SPDX-License-Identifier: MIT
#pragma once

#include "tests/faults/life.h"
#include "tests/faults/storage_faults.h"

/// The fault that came, and in which step of the life.
struct Hit
{
    StorageFault fault;
    int step;
    int area;      ///< index into lifeAreas of the file that it came for; below 0 for the directory
    bool onStream; ///< on an open retention stream, not while a file is made
};

struct AreaOutcome
{
    QByteArray restored;            ///< the area's memory after start-up
    std::optional<QByteArray> file; ///< at the end; nothing: no such file
};

/// Where a life of an area starts.
struct AreaStart
{
    Mode mode;
    int area; ///< index into lifeAreas
    std::optional<QByteArray> file;
};

/// The outcome for an area. When the restore of the area that was hit broke off, `unitsRestored` of its bits
/// or word blocks were restored before.
AreaOutcome outcome(const AreaStart& start, const std::optional<Hit>& hit, int unitsRestored = 0);

/// Number of units that a restore of the area goes through, one by one.
int restoreUnits(const AreaStart& start);
