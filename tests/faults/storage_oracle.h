// Models what a life leaves in one area when calls to storage fail, without the module's code.
// SPDX-License-Identifier: MIT
#pragma once

#include "tests/faults/life.h"
#include "tests/faults/storage_faults.h"

#include <set>

/// A fault that occurred, and the step of the life.
struct Hit
{
    StorageFault fault; ///< with its kind
    int step;
    std::optional<std::size_t> area; ///< index into testAreas; nothing for the directory
    bool onStream;                   ///< on an open retention stream, not while a file is created
    int areaWrites;                  ///< the module's writes to that area by then
    int position;                    ///< the file offset of the read that was hit
};
using Hits = std::vector<Hit>;

/// Where a life of an area starts.
struct AreaStart
{
    Mode mode;
    std::size_t area; ///< index into testAreas
    std::optional<QByteArray> file;
    bool hasDirectory;
};

/// A state of a file, and the step in which it was reached.
struct FileState
{
    int step;
    std::optional<QByteArray> file; ///< nothing: no such file
};

struct AreaOutcome
{
    QByteArray restored;          ///< the area's memory after start-up
    std::vector<FileState> files; ///< in order; the first is that at the start
};

AreaOutcome outcome(const AreaStart& start, const Hits& hits);

/// The area's file at the end of a life that had `start.file` and `restored` after its start-up, and whose
/// changes or saves in the steps `leftOut` were not written.
std::optional<QByteArray> fileAtEnd(const AreaStart& start, const QByteArray& restored,
                                    const std::set<int>& leftOut);
