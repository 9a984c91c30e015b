// Shows values by their names.
// SPDX-License-Identifier: MIT
#pragma once

#include "tools/retention_core/value_table.h"
#include "tools/retention_inspector/report/report.h"

/// The text of a value, in JSON a number where it is one; "-" for null.
Value valueOf(const ValueType& type, const QString& text);

/// "values": area, address, name, type, value, unit and state, without rows.
Table namedValues();

/// Adds a row for each value of the area with a cell in `wanted`: those that tags name and, with `unnamed`,
/// the others, too. Values that are not of the type of their tag are added to the findings.
void addNamedValues(const Layout& layout, const AreaReading& reading, const Tags& tags,
                    const CellRanges& wanted, bool unnamed, Table& table, std::vector<Finding>& findings);

/// What is found about tags, and a note that names those whose cells the project does not retain at all:
/// tables of values have no row of them.
void addTagRemarks(const Layout& layout, const Tags& tags, Report& report);
