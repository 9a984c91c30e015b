// Reports for scripts: JSON and CSV.
// SPDX-License-Identifier: MIT
#include "tools/retention_inspector/report/report.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace {

const int formVersion = 1; // goes up when a key or its meaning changes; new keys leave it alone

QString severityKey(const Finding& finding)
{
    return finding.severity == Finding::Severity::Error ? QStringLiteral("error") : QStringLiteral("warning");
}

/// The findings as one more table.
Table findingTable(const Report& report)
{
    Table table{QStringLiteral("findings"),
                QStringLiteral("finding"),
                {},
                {{"severity", ""},
                 {"kind", ""},
                 {"entry", ""},
                 {"area", ""},
                 {"cells", ""},
                 {"place", ""},
                 {"problem", ""},
                 {"remedy", ""}},
                {}};
    for (const Finding& finding : report.findings)
        table.rows.push_back({textValue(severityKey(finding)), textValue(finding.kind),
                              finding.entry ? numberValue(qint64(finding.entry)) : absentValue(),
                              finding.area.isEmpty() ? absentValue() : textValue(finding.area),
                              rangesValue(finding.cells), textValue(finding.place),
                              textValue(finding.problem), textValue(finding.remedy)});
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

/// Numbers as in the text; lists and ranges as in "9, 12 to 14".
QString csvText(const Value& value)
{
    if (value.data.isString())
        return value.data.toString();
    if (!value.data.isArray())
        return value.text;
    QStringList texts;
    for (const auto item : value.data.toArray()) {
        const QJsonArray ends = item.toArray();
        texts.append(ends.isEmpty() ? QString::number(item.toInt())
                                    : rangeText({static_cast<qint64>(ends.first().toDouble()),
                                                 static_cast<qint64>(ends.last().toDouble())}));
    }
    return texts.join(QLatin1String(", "));
}

void appendCsv(QString& out, const Table& table)
{
    out += QLatin1String("record");
    for (const Column& column : table.columns)
        if (column.key)
            out += QLatin1Char(',') + QLatin1String(column.key);
    out += QLatin1Char('\n');
    for (const auto& row : table.rows) {
        out += table.record;
        for (std::size_t i = 0; i < row.size(); ++i)
            if (table.columns[i].key)
                out += QLatin1Char(',') + csvField(csvText(row[i]));
        out += QLatin1Char('\n');
    }
}

} // namespace

QString reportJson(const Report& report)
{
    QJsonObject root;
    root.insert(QStringLiteral("version"), formVersion);
    root.insert(QStringLiteral("command"), report.command);
    for (const Fact& fact : report.facts)
        root.insert(fact.key, fact.value.data);
    for (const Table& table : report.tables)
        if (table.readers != Table::Readers::People)
            root.insert(table.key, rowObjects(table));
    root.insert(QStringLiteral("findings"), rowObjects(findingTable(report)));
    root.insert(QStringLiteral("notes"), QJsonArray::fromStringList(report.notes));
    return QString::fromUtf8(QJsonDocument(root).toJson());
}

QString reportCsv(const Report& report)
{
    QString out = QStringLiteral("record,key,value\n");
    for (const Fact& fact : report.facts)
        out += QStringLiteral("fact,%1,").arg(fact.key) + csvField(csvText(fact.value)) + QLatin1Char('\n');
    for (const Table& table : report.tables)
        if (table.readers != Table::Readers::People)
            appendCsv(out, table);
    appendCsv(out, findingTable(report));
    return out;
}
