// Kept values carried from the files of one project to those of another.
// SPDX-License-Identifier: MIT
#ifndef TOOLS_RETENTION_INSPECTOR_MIGRATION_H
#define TOOLS_RETENTION_INSPECTOR_MIGRATION_H

#include "tools/retention_core/kept_values.h"
#include "tools/retention_inspector/report/report.h"

#include <array>

/// What becomes of the cells of one area.
struct AreaMigration
{
    CellRanges carried;       ///< kept by both projects, with their values
    CellRanges without;       ///< kept by both projects, but without a value in the old files; 0
    CellRanges added;         ///< kept by the new project only; 0
    CellRanges dropped;       ///< kept by the old project only
    bool foreignBits = false; ///< the image of "LB" does not hold one bit a byte, so none was carried
    AreaValues values;        ///< for the new file
};

struct Migration
{
    const Layout* from;
    const Layout* to;
    const RetentionFiles* files; ///< of the old project
    std::array<AreaMigration, 3> areas;

    /// "LB" goes from packed bits to an image or the other way, so that the panel's layout of bits matters.
    bool bitsChangeForm() const { return from->images() != to->images(); }
};

/// Nothing is written. The arguments must outlive the result.
Migration planMigration(const Layout& from, const Layout& to, const RetentionFiles& files);

/// Makes the new file of an area, at the length that the module would give it. Returns what went wrong;
/// nothing when all went well.
QString writeNewFile(const Migration& migration, const AreaFacts& area, const QString& path);

/// Makes `directory` with the three new files. Returns what went wrong, with nothing made; or nothing.
QString writeNewFiles(const Migration& migration, const QString& directory);

Report migrationReport(const Migration& migration, const QString& directory);

#endif
