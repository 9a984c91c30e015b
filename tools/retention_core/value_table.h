// Turns kept cells into rows of named, typed values, and such rows back into cells.
// SPDX-License-Identifier: MIT
#pragma once

#include "tools/retention_core/csv_table.h"
#include "tools/retention_core/kept_values.h"
#include "tools/retention_core/tags.h"

#include <functional>
#include <optional>
#include <vector>

/// What can be relied on in one area's files.
struct AreaReading
{
    AreaValues values;
    std::vector<Finding>
        findings;        ///< those of checkFile(), and one about a bit image that holds other than bits
    bool misfit = false; ///< the file's values may belong to other cells or to another project

    bool doubtful() const { return misfit || values.oddBytes > 0; }
};

AreaReading readArea(const Layout& layout, const RetentionFile& file);

/// In the order of areaFacts.
using AreaReadings = std::array<AreaReading, areaCount>;
AreaReadings readAreas(const Layout& layout, const RetentionFiles& files);

/// One value: that of a tag of which every cell is kept, or of a single cell.
struct ValueRow
{
    const AreaFacts* area = nullptr;
    qint64 first = 0;
    ValueType type;
    const Tag* tag = nullptr; ///< null for a cell without a tag
    QString name; ///< of the tag, or made from the entry's; may be empty. Of a cell of several: "name[2]"

    CellRange cells() const { return {first, first + type.cells() - 1}; }
};

/// All that the project keeps in one area, by address: cell by cell and, with tags, each tag that is kept
/// whole in one row. A tag whose cells hold no value of its type comes cell by cell, too, and is added to the
/// findings.
void forEachValue(const Layout& layout, const AreaReading& reading, const Tags* tags,
                  std::vector<Finding>& findings, const std::function<void(const ValueRow& row)>& take);

/// The value in these values; null when they hold none or none of the type.
QString textOf(const AreaValues& values, const ValueRow& row);

/// "kept", "start-value", "no-value" or, in an area that is doubtful, "doubtful": the worst of a value's
/// cells.
const char* stateOf(const AreaReading& reading, const CellRange& cells);

/// One line of a table of values that names a value.
struct ValueLine
{
    int line = 0;
    const AreaFacts* area = nullptr;
    qint64 first = 0;
    ValueType type;
    QString name;
    std::vector<ushort> cells;
};

/// Reads a table with the columns area, address and value and, if any, type (a cell's own unless given), name
/// and state. Lines without a value whose state is "no-value" are passed over. Throws a Refusal that names
/// every line that cannot be kept: not retained, not of its type, a second value of a cell, a doubtful one.
std::vector<ValueLine> readValueLines(const QString& path, const Layout& layout);
