// Writes reports for scripts, as JSON and CSV.
// SPDX-License-Identifier: MIT
#include "tools/retention_inspector/report/report.h"

#include "tools/retention_core/refusal.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <algorithm>
#include <iterator>

namespace {

const int formVersion = 2; // increases when a key or its meaning changes, not when keys are added

/// The findings as one more table.
Table findingTable(const Report& report)
{
    Table table{"findings",
                "finding",
                nullptr,
                {{"severity"}, {"kind"}, {"entry"}, {"area"}, {"cells"}, {"place"}, {"problem"}, {"remedy"}}};
    for (const Finding& finding : report.findings)
        table.rows.push_back({finding.severity == Finding::Severity::Error ? "error" : "warning",
                              finding.kind, finding.entry ? Value(finding.entry) : Value(),
                              finding.area.isEmpty() ? Value() : Value(finding.area), finding.cells,
                              finding.place, finding.problem, finding.remedy});
    return table;
}

Table factTable(const Report& report)
{
    Table table{"facts", "fact", nullptr, {{"key"}, {"value"}}};
    for (const Fact& fact : report.facts)
        table.rows.push_back({fact.key, fact.value});
    return table;
}

QJsonArray rowObjects(const Table& table)
{
    QJsonArray rows;
    for (const auto& row : table.rows) {
        QJsonObject object;
        for (std::size_t i = 0; i < table.columns.size(); ++i)
            if (table.columns[i].key)
                object.insert(QLatin1String(table.columns[i].key), row[i].data);
        rows.append(object);
    }
    return rows;
}

QString csvField(const QString& text)
{
    if (!text.contains(QLatin1Char(',')) && !text.contains(QLatin1Char('"')) &&
        !text.contains(QLatin1Char('\n')) && !text.contains(QLatin1Char('\r')))
        return text;
    QString quoted = text;
    quoted.replace(QLatin1Char('"'), QLatin1String("\"\""));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

/// The value as for scripts, except that lists are written as for people.
QString csvText(const Value& value)
{
    if (value.data.isDouble())
        return QString::number(value.data.toDouble(), 'g', 15);
    if (value.data.isNull())
        return {};
    return csvField(value.data.isString() ? value.data.toString() : value.text);
}

/// A heading line and one line for each row, each after these texts.
void appendCsv(QString& out, const Table& table, const QString& beforeNames = QString(),
               const QString& beforeRow = QString())
{
    QStringList names;
    for (const Column& column : table.columns)
        if (column.key)
            names.append(QLatin1String(column.key));
    out += beforeNames + names.join(QLatin1Char(',')) + QLatin1Char('\n');
    for (const auto& row : table.rows) {
        QStringList fields;
        for (std::size_t i = 0; i < row.size(); ++i)
            if (table.columns[i].key)
                fields.append(csvText(row[i]));
        out += beforeRow + fields.join(QLatin1Char(',')) + QLatin1Char('\n');
    }
}

} // namespace

Value::Value(qint64 number) : data(static_cast<double>(number)), text(QString::number(number)) {}

Value::Value(const CellRanges& ranges) : text(ranges.text())
{
    QJsonArray pairs;
    for (const CellRange& range : ranges)
        pairs.append(QJsonArray{static_cast<double>(range.first), static_cast<double>(range.last)});
    data = pairs;
}

Value::Value(const std::vector<int>& numbers)
{
    QJsonArray list;
    QStringList texts;
    for (const int number : numbers) {
        list.append(number);
        texts.append(QString::number(number));
    }
    data = list;
    text = texts.join(QLatin1String(", "));
}

QString reportJson(const Report& report)
{
    QJsonObject root;
    root.insert(QStringLiteral("version"), formVersion);
    root.insert(QStringLiteral("command"), report.command);
    for (const Fact& fact : report.facts)
        root.insert(QLatin1String(fact.key), fact.value.data);
    for (const Table& table : report.tables)
        if (table.key)
            root.insert(QLatin1String(table.key), rowObjects(table));
    root.insert(QStringLiteral("findings"), rowObjects(findingTable(report)));
    root.insert(QStringLiteral("notes"), QJsonArray::fromStringList(report.notes));
    return QString::fromUtf8(QJsonDocument(root).toJson());
}

QString reportCsv(const Report& report)
{
    std::vector<Table> tables;
    std::copy_if(report.tables.begin(), report.tables.end(), std::back_inserter(tables),
                 [](const Table& table) { return table.key != nullptr; });
    const auto filled =
        std::find_if(tables.begin(), tables.end(), [](const Table& table) { return !table.rows.empty(); });
    const auto usual = static_cast<std::size_t>(filled == tables.end() ? 0 : filled - tables.begin());
    tables.push_back(findingTable(report));
    tables.push_back(factTable(report));
    QString out;
    if (report.csvTable.isEmpty()) {
        appendCsv(out, tables[usual]);
        return out;
    }
    if (report.csvTable == QLatin1String("all")) {
        for (const Table& table : tables)
            appendCsv(out, table, QStringLiteral("record,"), QLatin1String(table.record) + QLatin1Char(','));
        return out;
    }
    QStringList known;
    for (const Table& table : tables) {
        if (report.csvTable == QLatin1String(table.key)) {
            appendCsv(out, table);
            return out;
        }
        known.append(QLatin1String(table.key));
    }
    throw Refusal(QStringLiteral("--table \"%1\": expected one of %2, or all")
                      .arg(report.csvTable, known.join(QLatin1String(", "))));
}
