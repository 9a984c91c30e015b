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

void addTagRemarks(const Layout& layout, const Tags& tags, Report& report)
{
    for (Finding& finding : tagFindings(layout, tags))
        report.findings.push_back(std::move(finding));
    const int most = 5; // named one by one
    QStringList lost;
    for (const Tag& tag : tags.tags)
        if (layout.of(*tag.area).kept.within(tag.cells()).isEmpty())
            lost.append(QStringLiteral("\"%1\" (%2 %3)")
                            .arg(tag.name, QLatin1String(tag.area->name), rangeText(tag.cells())));
    if (lost.isEmpty())
        return;
    const QString more =
        lost.size() > most ? QStringLiteral(" and %1 more").arg(lost.size() - most) : QString();
    report.notes.append(
        QStringLiteral("%1: the project retains no cell of %2%3.")
            .arg(tags.fileName, QStringList(lost.mid(0, most)).join(QLatin1String(", ")), more));
}
