// Writing and copying of the shared log.
// SPDX-License-Identifier: MIT
#include "tests/power_cut/process_cuts/shared_log.h"

#include <algorithm>

void copyAreas(const MemoryAreas& from, AreaBytes& to)
{
    auto at = to.begin();
    for (const MemoryArea& area : from.all())
        at = std::copy(area.memory().begin(), area.memory().end(), at);
}

void copyAreas(const AreaBytes& from, MemoryAreas& to)
{
    auto at = from.begin();
    for (MemoryArea& area : to.all()) {
        const auto end = at + static_cast<std::ptrdiff_t>(area.memory().size());
        std::copy(at, end, area.memory().begin());
        at = end;
    }
}

Images imagesOf(const AreaBytes& bytes)
{
    MemoryAreas areas;
    copyAreas(bytes, areas);
    return imagesOf(areas);
}

void SharedLogWriter::give(const Change& change)
{
    log.changes[static_cast<std::size_t>(log.given.load())] = change;
    ++log.given;
}

void SharedLogWriter::keep(const Change&)
{
    ++log.kept;
}

void SharedLogWriter::beginSave(const MemoryAreas& areas)
{
    copyAreas(areas, log.save(log.completedSaves()));
    ++log.saveSteps;
}

void SharedLogWriter::completeSave()
{
    ++log.saveSteps;
}

void SharedLogWriter::sync()
{
    ++log.syncs;
}
