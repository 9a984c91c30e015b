// Works out from a project's XML which cells are retained and what a start makes of the retention files,
// without the module's code and without the configuration tree. SPDX-License-Identifier: MIT
#pragma once

#include "simulated_host/memory_areas.h"

#include <QtCore/QByteArray>

#include <array>
#include <map>
#include <vector>

inline const char* const areaNames[3] = {"LB", "LW", "RWI"};
inline const char* const retentionFileNames[3] = {"maintenance-bit.dat", "maintenance-word.dat",
                                                  "maintenance-RWI.dat"};

/// Files of a directory and their bytes.
using Files = std::map<QString, QByteArray>;

/// Consecutive retained cells of one area. `place` is the number of the first one among all that are in the
/// area's file.
struct Block
{
    int first;
    int count;
    int place;
};

struct RetainedCells
{
    bool wholeAreas = false;
    std::array<std::vector<Block>, 3> blocks; ///< by area, in the order of the file; empty with whole areas

    /// Retained cells of an area; none with whole areas.
    int count(std::size_t area) const;
    /// The block with that cell; null when it is not retained.
    const Block* blockOf(std::size_t area, int address) const;
    /// The address of the cell at that place.
    int addressAt(std::size_t area, int place) const;
};

RetainedCells retainedCellsOf(const QByteArray& projectXml);

/// What an area's file says of a cell for which it says nothing: the panel's own value stays.
constexpr int nothing = -1;
/// The values in a file from that place on: words, or `nothing` when there is no file or an empty one; bits.
/// What lies past its end is 0.
std::vector<int> storedCells(std::size_t area, const Files& files, int place, int count);
/// The image of a whole area in its file; all zero when the file is missing or shorter.
QByteArray storedImage(std::size_t area, const Files& files);

/// Makes of the areas, as the panel had them, what a start on these files must make of them.
void restoreInto(MemoryAreas& areas, const RetainedCells& cells, const Files& files);
/// The files after a start.
Files filesAfterStart(const RetainedCells& cells, Files files);
