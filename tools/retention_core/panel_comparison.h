// Compares the values of many panels of one project with what most of them have.
// SPDX-License-Identifier: MIT
#pragma once

#include "tools/retention_core/value_table.h"

#include <QtCore/QStringList>

#include <functional>

/// A cell of one panel with a value different from most panels'.
struct Deviation
{
    std::size_t panel;
    qint64 cell;
    ushort value;
    ushort most; ///< the value of more than half of the panels
};

struct ComparedPanel
{
    QString directory;
    std::array<bool, areaCount> fits = {}; ///< the area's file does, so its values are compared
    std::size_t findings = 0;
    std::array<std::vector<CellRange>, areaCount> different = {};
    qint64 cells = 0; ///< that differ
};

struct PanelComparison
{
    std::vector<ComparedPanel> panels;                             ///< in the order of the directories
    std::array<std::vector<Deviation>, areaCount> deviations = {}; ///< by panel, then by cell
    qint64 undecided = 0;  ///< cells of which no value is that of more than half of the panels
    qint64 betweenTwo = 0; ///< of these, cells that only two panels have
    std::vector<Finding> findings;
};

/// Checks the files of each directory and compares the values of those that fit. Reads each file three times
/// and never keeps the values of more than one panel. Calls `step` three times for each directory.
PanelComparison comparePanels(const Layout& layout, const QStringList& directories,
                              const std::function<void()>& step);
