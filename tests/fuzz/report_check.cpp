// Parses reports with Qt's JSON parser and with libcsv.
// SPDX-License-Identifier: MIT
#include "tests/fuzz/report_check.h"

#include "tests/fuzz/fuzz_check.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QStringList>

#include <cmath>
#include <csv.h>

namespace {

using CsvRows = std::vector<QStringList>;

void endField(void* text, std::size_t size, void* rows)
{
    static_cast<CsvRows*>(rows)->back().append(
        QString::fromUtf8(static_cast<const char*>(text), static_cast<int>(size)));
}

void endRow(int, void* rows)
{
    static_cast<CsvRows*>(rows)->emplace_back();
}

CsvRows parsedCsv(const QByteArray& bytes)
{
    CsvRows rows(1);
    csv_parser parser;
    FUZZ_CHECK(csv_init(&parser, CSV_STRICT | CSV_STRICT_FINI) == 0);
    const auto size = static_cast<std::size_t>(bytes.size());
    FUZZ_CHECK(csv_parse(&parser, bytes.constData(), size, endField, endRow, &rows) == size);
    FUZZ_CHECK(csv_fini(&parser, endField, endRow, &rows) == 0);
    csv_free(&parser);
    FUZZ_CHECK(rows.back().isEmpty()); // the last line is complete
    rows.pop_back();
    return rows;
}

/// A list of numbers, or of ranges of cells, as written in CSV.
QString listText(const QJsonArray& list)
{
    const auto number = [](const QJsonValue& value) {
        return QString::number(static_cast<qint64>(value.toDouble()));
    };
    QStringList texts;
    for (const QJsonValue& item : list) {
        if (!item.isArray())
            texts.append(number(item));
        else if (item.toArray().first() == item.toArray().last())
            texts.append(number(item.toArray().first()));
        else
            texts.append(number(item.toArray().first()) + QLatin1String(" to ") +
                         number(item.toArray().last()));
    }
    return texts.join(QLatin1String(", "));
}

/// Whether both are the same value.
bool agree(const QJsonValue& value, const QString& text)
{
    switch (value.type()) {
    case QJsonValue::String:
        return value.toString().simplified() == text.simplified();
    case QJsonValue::Array:
        return listText(value.toArray()) == text;
    case QJsonValue::Null:
        return text.isEmpty() || text == QLatin1String("-");
    case QJsonValue::Double: {
        bool isNumber = false;
        const double number = text.toDouble(&isNumber);
        return isNumber && std::abs(number - value.toDouble()) <= std::abs(value.toDouble()) * 1e-14;
    }
    default:
        return false;
    }
}

/// Takes the lines of a table from the beginning of the CSV and compares them with the rows of the JSON.
void checkTable(const std::vector<Column>& columns, const QString& record, const QJsonArray& rows,
                CsvRows::const_iterator& line, CsvRows::const_iterator end)
{
    QStringList keys;
    for (const Column& column : columns)
        if (column.key)
            keys.append(QLatin1String(column.key));
    FUZZ_CHECK(line != end && *line++ == QStringList(QStringLiteral("record")) + keys);
    for (const QJsonValue& row : rows) {
        const QJsonObject object = row.toObject();
        FUZZ_CHECK(line != end && line->size() == keys.size() + 1 && line->first() == record);
        FUZZ_CHECK(object.size() == keys.size());
        for (int k = 0; k < keys.size(); ++k)
            FUZZ_CHECK(object.contains(keys.at(k)) && agree(object.value(keys.at(k)), line->at(k + 1)));
        ++line;
    }
}

void checkCsv(Report report, const QJsonObject& json)
{
    report.csvTable = QStringLiteral("all");
    const CsvRows rows = parsedCsv(reportCsv(report).toUtf8());
    auto line = rows.begin();
    for (const Table& table : report.tables) {
        if (!table.key)
            continue;
        const QJsonArray list = json.value(QLatin1String(table.key)).toArray();
        FUZZ_CHECK(static_cast<std::size_t>(list.size()) == table.rows.size());
        checkTable(table.columns, QLatin1String(table.record), list, line, rows.end());
    }
    const QJsonArray findings = json.value(QStringLiteral("findings")).toArray();
    FUZZ_CHECK(static_cast<std::size_t>(findings.size()) == report.findings.size());
    checkTable({{"severity"}, {"kind"}, {"entry"}, {"area"}, {"cells"}, {"place"}, {"problem"}, {"remedy"}},
               QStringLiteral("finding"), findings, line, rows.end());
    FUZZ_CHECK(line != rows.end() && line++->join(QLatin1Char(' ')) == QLatin1String("record key value"));
    for (const Fact& fact : report.facts) {
        const QString key = QLatin1String(fact.key);
        FUZZ_CHECK(line != rows.end() && line->size() == 3);
        FUZZ_CHECK(line->at(0) == QLatin1String("fact") && line->at(1) == key);
        FUZZ_CHECK(json.contains(key) && agree(json.value(key), line->at(2)));
        ++line;
    }
    FUZZ_CHECK(line == rows.end());
}

/// The text: whole lines without anything that moves the cursor, and every finding.
void checkText(const Report& report)
{
    const QString text = reportText(report);
    FUZZ_CHECK(text.endsWith(QLatin1Char('\n')));
    for (const QChar c : text)
        FUZZ_CHECK(c == QLatin1Char('\n') || c.category() != QChar::Other_Control);
    FUZZ_CHECK(text.count(QLatin1Char('\n')) >= static_cast<int>(report.findings.size()));
}

} // namespace

QJsonObject checkFormats(const Report& report)
{
    QJsonParseError error;
    const QJsonObject json = QJsonDocument::fromJson(reportJson(report).toUtf8(), &error).object();
    FUZZ_CHECK(error.error == QJsonParseError::NoError);
    FUZZ_CHECK(json.value(QStringLiteral("command")).toString() == report.command);
    FUZZ_CHECK(json.value(QStringLiteral("notes")).toArray().size() == report.notes.size());
    checkCsv(report, json);
    checkText(report);
    return json;
}
