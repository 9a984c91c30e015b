// Models which cells a project retains, where they are in the retention files, and what a start makes of
// these, without the module's code.
// SPDX-License-Identifier: MIT
#pragma once

#include "simulated_host/memory_areas.h"
#include "tests/support/areas.h"
#include "tests/support/expected_project.h"

#include <QtCore/QByteArray>

#include <array>
#include <map>
#include <vector>

/// Files of a directory and their bytes.
using Files = std::map<QString, QByteArray>;

/// Consecutive retained cells of one area. `place` is the index of the first one among all cells in the
/// area's file.
struct Block
{
    int first;
    int count;
    int place;
};

struct RetainedCells
{
    ExpectedProject project;
    bool wholeAreas = false;
    std::array<std::vector<Block>, 3> blocks; ///< by area, in the order of the file; empty with whole areas

    /// Retained cells of an area; none with whole areas.
    int count(std::size_t area) const;
    /// The block with that cell; null when it is not retained.
    const Block* blockOf(std::size_t area, int address) const;
    /// The address of the cell at that place.
    int addressAt(std::size_t area, int place) const;
};

RetainedCells retainedCellsOf(const object& project);

/// The stored value of a cell for which a file says nothing: the panel's own value stays.
constexpr int nothing = -1;
/// The values in a file from that place on: bits, or words (`nothing` when the file is missing or empty).
/// Past its end they are 0.
std::vector<int> storedCells(std::size_t area, const Files& files, int place, int count);
/// The image of a whole area in its file; all zero when the file is missing or shorter.
QByteArray storedImage(std::size_t area, const Files& files);

/// Changes the areas, given as the panel had them, as a start on these files must. Returns the files after
/// the start.
Files filesAfterStart(const Files& files, const RetainedCells& cells, MemoryAreas& areas);
