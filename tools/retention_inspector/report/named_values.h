// Adds values by name to reports.
// SPDX-License-Identifier: MIT
#pragma once

#include "tools/retention_core/value_table.h"
#include "tools/retention_inspector/report/report.h"

/// The text of a value, which is a number in JSON if possible; "-" for null.
Value valueOf(const ValueType& type, const QString& text);

/// The table "values", without rows: area, address, name, type, value, unit and state.
Table namedValues();

/// Adds a row for each value of the area with a cell in `wanted`: those that tags name and, with `unnamed`,
/// also the others. Values that do not have their tag's type are added to the findings.
void addNamedValues(const Layout& layout, const AreaReading& reading, const Tags& tags,
                    const CellRanges& wanted, bool unnamed, Table& table, std::vector<Finding>& findings);

/// Adds the findings about tags, and a note that names tags of which no cell is retained, because tables of
/// values have no row for them.
void addTagRemarks(const Layout& layout, const Tags& tags, Report& report);
