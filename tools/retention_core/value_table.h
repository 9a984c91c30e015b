// Turns kept cells into rows of named, typed values, and such rows back into cells.
// SPDX-License-Identifier: MIT
#pragma once

#include "tools/retention_core/csv_table.h"
#include "tools/retention_core/kept_values.h"
#include "tools/retention_core/tags.h"

#include <functional>
#include <optional>
#include <vector>

/// The values of one area's file, and how reliable they are.
struct AreaReading
{
    AreaValues values;
    std::vector<Finding>
        findings;        ///< those of checkFile(), and one about a bit image with bytes other than 0 and 1
    bool misfit = false; ///< the file's values may belong to other cells or to another project

    bool doubtful() const { return misfit || values.oddBytes > 0; }
};

AreaReading readArea(const Layout& layout, const RetentionFile& file);

/// In the order of areaFacts.
using AreaReadings = std::array<AreaReading, areaCount>;
AreaReadings readAreas(const Layout& layout, const RetentionFiles& files);

/// One value: of a tag of which every cell is kept, or of a single cell.
struct ValueRow
{
    const AreaFacts* area = nullptr;
    qint64 first = 0;
    ValueType type;
    const Tag* tag = nullptr; ///< null for a cell without a tag
    QString
        name; ///< of the tag, or derived from the entry's; may be empty. For one of several cells: "name[2]"

    CellRange cells() const { return {first, first + type.cells() - 1}; }
};

/// Passes everything that the project keeps in one area to `take`, by address: cell by cell and, with tags,
/// one row for each tag of which every cell is kept. A tag whose cells hold no value of its type is also
/// passed cell by cell, and added to the findings.
void forEachValue(const Layout& layout, const AreaReading& reading, const Tags* tags,
                  std::vector<Finding>& findings, const std::function<void(const ValueRow& row)>& take);

/// The value of the row; null when its cells hold none, or none of its type.
QString textOf(const AreaValues& values, const ValueRow& row);

/// "kept", "start-value", "no-value" or, in a doubtful area, "doubtful": the worst among a value's cells.
const char* stateOf(const AreaReading& reading, const CellRange& cells);

/// One line with a value from a table of values.
struct ValueLine
{
    int line = 0;
    const AreaFacts* area = nullptr;
    qint64 first = 0;
    ValueType type;
    QString name;
    std::vector<ushort> cells;
};

/// Reads a table with the columns area, address and value and optionally type (by default that of a cell),
/// name and state. Lines with the state "no-value" and no value are skipped. Throws a Refusal that names the
/// lines that cannot be kept: not retained, not of the type, a second value for a cell, doubtful.
std::vector<ValueLine> readValueLines(const QString& path, const Layout& layout);
