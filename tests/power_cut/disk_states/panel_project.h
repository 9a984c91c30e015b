// Makes random projects for panels that lose their power.
// SPDX-License-Identifier: MIT
#pragma once

#include "project_tree/project_tree.h"
#include "tests/power_cut/disk_states/retained_cells.h"
#include "tests/support/random_source.h"

#include <QtCore/QByteArray>

#include <memory>

struct PanelProject
{
    QByteArray xml;               ///< the project file
    std::unique_ptr<object> root; ///< the same for a panel
    RetainedCells cells;          ///< that the project retains
};

enum class ProjectKind
{
    FewRanges, ///< few cells, some of them in blocks that cross a sector boundary
    ManyRanges,
    OverlappingRanges, ///< entries that overlap, are empty or name no area
    LongBlocks,        ///< of more than 4096 words, and a bit file of several sectors
    WholeAreas
};
constexpr int projectKinds = 5;
inline const char* const projectKindNames[projectKinds] = {"few ranges", "many ranges", "overlapping ranges",
                                                           "long blocks", "whole areas"};

/// At least one cell of it is retained.
PanelProject randomProject(ProjectKind kind, RandomSource& random);
