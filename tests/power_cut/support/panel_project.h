// Random projects for panels that lose their power.
// SPDX-License-Identifier: MIT
#ifndef TESTS_POWER_CUT_SUPPORT_PANEL_PROJECT_H
#define TESTS_POWER_CUT_SUPPORT_PANEL_PROJECT_H

#include "project_tree/project_tree.h"
#include "tests/power_cut/support/random.h"

#include <QtCore/QByteArray>

#include <memory>
#include <vector>

inline const char* const areaNames[3] = {"LB", "LW", "RWI"};
inline const char* const retentionFileNames[3] = {"maintenance-bit.dat", "maintenance-word.dat",
                                                  "maintenance-RWI.dat"};

/// Consecutive cells of one area, which is a place in `areaNames`.
struct CellRange
{
    int area;
    int first;
    int count;
};

struct PanelProject
{
    std::vector<CellRange> ranges; ///< what is retained, without overlaps; empty: whole areas
    QByteArray xml;                ///< the project file
    std::unique_ptr<object> root;  ///< the same for a panel

    bool wholeAreas() const { return ranges.empty(); }
};

PanelProject projectOf(std::vector<CellRange> ranges);

/// How much a project retains.
enum class ProjectSize
{
    Small, ///< few cells, some of them in blocks that cross a sector boundary
    Large
};

/// Address ranges in at least one area. Some are adjacent, some are wider than a sector.
PanelProject randomRanges(Random& random, ProjectSize size);

#endif
