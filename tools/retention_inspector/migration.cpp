// The plan of a migration: which cells are carried, and with which values.
// SPDX-License-Identifier: MIT
#include "tools/retention_inspector/migration.h"

#include <algorithm>
#include <utility>

namespace {

CellRanges both(const CellRanges& a, const CellRanges& b)
{
    return a.minus(a.minus(b));
}

AreaMigration planArea(const Migration& migration, const RetentionFile& file)
{
    const CellRanges& oldCells = migration.from->of(*file.area).kept;
    const CellRanges& newCells = migration.to->of(*file.area).kept;
    AreaValues values = areaValues(*migration.from, file);
    AreaMigration area;
    area.foreignBits = migration.bitsChangeForm() && values.oddBytes > 0;
    const CellRanges common = both(oldCells, newCells);
    area.without = area.foreignBits ? common : both(common, values.cellsIn(CellState::NoValue));
    area.carried = common.minus(area.without);
    area.added = newCells.minus(oldCells);
    area.dropped = oldCells.minus(newCells);
    area.values = std::move(values);
    std::vector<ushort> carried(area.values.values.size());
    for (const CellRange& range : area.carried)
        std::copy(area.values.values.begin() + range.first, area.values.values.begin() + range.last + 1,
                  carried.begin() + range.first);
    area.values.values = std::move(carried);
    return area;
}

} // namespace

Migration planMigration(const Layout& from, const Layout& to, const RetentionFiles& files)
{
    Migration migration{&from, &to, &files, {}};
    for (std::size_t i = 0; i < files.size(); ++i)
        migration.areas[i] = planArea(migration, files[i]);
    return migration;
}
