// What a life leaves behind in one area when one call to storage fails, told without the module.
// SPDX-License-Identifier: MIT
#pragma once

#include "tests/faults/life.h"
#include "tests/faults/storage_faults.h"

#include <set>

/// A fault that came, and in which step of the life.
struct Hit
{
    StorageFault fault; ///< with its kind
    int step;
    int area;       ///< index into lifeAreas of the file that it came for; below 0 for the directory
    bool onStream;  ///< on an open retention stream, not while a file is made
    int areaWrites; ///< how often the module had written to that area by then
    int position;   ///< where the read that was hit began in the file
};
using Hits = std::vector<Hit>;

/// Where a life of an area starts.
struct AreaStart
{
    Mode mode;
    int area; ///< index into lifeAreas
    std::optional<QByteArray> file;
    bool hasDirectory;
};

/// A state of a file, and the step in which it came.
struct FileState
{
    int step;
    std::optional<QByteArray> file; ///< nothing: no such file
};

struct AreaOutcome
{
    QByteArray restored;          ///< the area's memory after start-up
    std::vector<FileState> files; ///< one after the other; the first as it was at the start
};

AreaOutcome outcome(const AreaStart& start, const Hits& hits);

/// The area's file at the end of a life that had `start.file` and `restored` after its start-up, and whose
/// changes or saves in the steps `leftOut` were not written.
std::optional<QByteArray> fileAtEnd(const AreaStart& start, const QByteArray& restored,
                                    const std::set<int>& leftOut);
