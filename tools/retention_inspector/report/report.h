// What a command found, before it is written as text, JSON or CSV.
// SPDX-License-Identifier: MIT
#ifndef TOOLS_RETENTION_INSPECTOR_REPORT_REPORT_H
#define TOOLS_RETENTION_INSPECTOR_REPORT_REPORT_H

#include "tools/retention_core/cell_ranges.h"

#include <QtCore/QJsonValue>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <vector>

/// One value in the form for scripts and in the form for people.
struct Value
{
    QJsonValue data;
    QString text;
};

Value numberValue(qint64 number);
Value numberValue(double number, int decimals);
Value textValue(const QString& text);
Value textValue(const char* text);
Value absentValue();                         ///< null; nothing in the text
Value rangesValue(const CellRanges& ranges); ///< [[first, last], ...]
Value numbersValue(const std::vector<int>& numbers);

struct Fact
{
    QString key;
    QString title;
    Value value;
};

struct Column
{
    const char* key;   ///< in JSON and CSV; null leaves the column out of them
    const char* title; ///< in the text; null leaves the column out of it
};

struct Table
{
    enum class Readers
    {
        All,
        People, ///< text only
        Scripts ///< JSON and CSV only
    };

    QString key;    ///< in JSON
    QString record; ///< first field of each CSV line
    QString title;
    std::vector<Column> columns;
    std::vector<std::vector<Value>> rows;
    Readers readers = Readers::All;
};

/// Something that the user should change.
struct Finding
{
    enum class Severity
    {
        Warning, ///< nothing is lost, but it is hardly meant
        Error    ///< values are or will be lost
    };

    Severity severity = Severity::Error;
    const char* kind = ""; ///< stable key such as "lost-in-fold"
    QString place;         ///< file or entry, with area and cells
    QString problem;       ///< what is wrong
    QString remedy;        ///< what to do
    int entry = 0;         ///< number of the entry; 0 for none
    QString area;          ///< empty for none
    CellRanges cells;      ///< the cells concerned
};

struct Report
{
    QString command;
    std::vector<Fact> facts;
    std::vector<Table> tables;
    std::vector<Finding> findings;
    QStringList notes;    ///< what else the user should know; no reason to change anything
    bool differs = false; ///< the tables themselves are what was looked for: differences

    bool isClean() const { return findings.empty() && !differs; }
};

enum class Format
{
    Text,
    Json,
    Csv
};

/// The whole report, ending with a line feed.
QString reportText(const Report& report);
QString reportJson(const Report& report);
QString reportCsv(const Report& report);
QString formatted(const Report& report, Format format);

#endif
