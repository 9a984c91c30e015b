// Makes rows of values with their names, types and units.
// SPDX-License-Identifier: MIT
#include "tools/retention_inspector/report/named_values.h"

Value valueOf(const ValueType& type, const QString& text)
{
    if (text.isNull())
        return {QJsonValue(), QStringLiteral("-")};
    if (type.kind == ValueType::Kind::String)
        return text;
    return {QJsonValue(text.toDouble()), text};
}

Table namedValues()
{
    return {"values",
            "value",
            "Values",
            {{"area", "Area"},
             {"address", "Address"},
             {"name", "Name"},
             {"value", "Value"},
             {"unit", "Unit"},
             {"type", "Type"},
             {"state", "State"}}};
}

void addNamedValues(const Layout& layout, const AreaReading& reading, const Tags& tags,
                    const CellRanges& wanted, bool unnamed, Table& table, std::vector<Finding>& findings)
{
    std::vector<Finding> notOfType;
    forEachValue(layout, reading, &tags, notOfType, [&](const ValueRow& row) {
        if ((row.tag || unnamed) && !wanted.within(row.cells()).isEmpty())
            table.rows.push_back(
                {row.area->name, row.first, row.name, valueOf(row.type, textOf(reading.values, row)),
                 row.tag ? row.tag->unit : QString(), row.type.text(), stateOf(reading, row.cells())});
    });
    for (Finding& finding : notOfType)
        if (!wanted.minus(wanted.minus(finding.cells)).isEmpty())
            findings.push_back(std::move(finding));
}

std::optional<Tags> tagsOf(const Inputs& inputs)
{
    return inputs.has("tags") ? std::optional(readTags(inputs.option("tags"))) : std::nullopt;
}
