// Plans what becomes of each kept cell when a project changes, and fills the new files.
// SPDX-License-Identifier: MIT
#pragma once

#include "tools/retention_core/cell_words.h"
#include "tools/retention_core/kept_values.h"

#include <QtCore/QStringList>

/// What becomes of the cells of one area.
struct AreaMigration
{
    CellRanges carried; ///< of the new project, with their values
    CellRanges without; ///< kept by both projects, but without a value in the old file; 0
    CellRanges added;   ///< of the new project: neither kept by the old one nor moved to; 0
    CellRanges
        dropped; ///< of the old project: neither kept by the new one nor moved, or overwritten by a move
    bool foreignBits = false;   ///< no bit was carried because of these bytes
    std::vector<ushort> values; ///< for the new file
    AreaValues old;
};

/// In the order of areaFacts.
using Migration = std::array<AreaMigration, areaCount>;

/// The ranges of entries that have the same name in both projects but begin elsewhere. The notes say why
/// nothing moves to the others. Throws a Refusal for whole areas.
std::vector<CellMove> movesByName(const Layout& from, const Layout& to, QStringList& notes);

/// What becomes of every cell: it keeps its value at its address, or where a move puts it. Throws a Refusal
/// for moves of cells that one of the projects does not retain, that meet, or whose place in the old file is
/// not known.
Migration planMigration(const Layout& from, const Layout& to, const RetentionFiles& old,
                        const std::vector<CellMove>& moves);

/// Writes an area's file of the new project, which must be empty. False when the device fails.
bool writeMigrated(const AreaLayout& layout, const AreaMigration& area, const RetentionFile& old,
                   QFile& file);

/// Whether "LB" goes from packed bits to an image or the other way, so that the panel's layout of bits
/// matters.
bool bitsChangeForm(const Layout& from, const Layout& to);
