// Describes what a command found, before it is written as text, JSON or CSV.
// SPDX-License-Identifier: MIT
#pragma once

#include "tools/retention_core/findings.h"

#include <QtCore/QByteArray>
#include <QtCore/QJsonValue>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <array>
#include <utility>
#include <vector>

/// One value, in a form for scripts and in a form for people.
struct Value
{
    Value() = default; ///< null; nothing in the text
    Value(QJsonValue forScripts, const QString& forPeople) : data(std::move(forScripts)), text(forPeople) {}
    Value(int number) : Value(qint64(number)) {}
    Value(qint64 number);
    Value(const QString& words) : data(words), text(words) {}
    Value(const char* words) : Value(QString::fromLatin1(words)) {}
    Value(const CellRanges& ranges); ///< [[first, last], ...]
    Value(const std::vector<int>& numbers);
    Value(const Words& words) : data(QString::fromLatin1(words.key)), text(words.text) {}
    Value(RetentionMode mode) : Value(wordsOf(mode)) {}

    QJsonValue data;
    QString text;
};

struct Fact
{
    const char* key;
    const char* title; ///< in the text; null omits the fact there
    Value value;
};

struct Column
{
    const char* key;             ///< in JSON and CSV; null omits the column there
    const char* title = nullptr; ///< in the text; null omits the column there
};

struct Table
{
    const char* key;    ///< in JSON and for --table; null omits the table in JSON and CSV
    const char* record; ///< first field of each line when one CSV has all tables
    const char* title;  ///< in the text; null omits the table there
    std::vector<Column> columns;
    std::vector<std::vector<Value>> rows = {};
};

struct Report
{
    QString command;
    std::vector<Fact> facts;
    std::vector<Table> tables;
    std::vector<Finding> findings;
    QStringList notes;    ///< other things that the user should know, which require no change
    bool differs = false; ///< the tables contain differences, which the user looked for
    QByteArray
        product; ///< UTF-8 for standard output; the report then goes to standard error. Null if there is none
    bool findingsFirst = false; ///< in the text, because they tell whether the tables can be trusted
    QString csvTable;           ///< key of the table for CSV; empty for the first with rows
    bool colour = false;        ///< for severities in the text

    void addNote(const QString& note) ///< ignores an empty one
    {
        if (!note.isEmpty())
            notes.append(note);
    }
    bool isClean() const { return findings.empty() && !differs; }
};

/// The whole report, ending with a line feed.
QString reportText(const Report& report);
QString reportJson(const Report& report);
/// One table of the report, with a heading line: `csvTable`, "findings" or "facts"; or "all" of them, each
/// line beginning with its kind. Throws a Refusal when there is no such table.
QString reportCsv(const Report& report);

/// What to do about a finding in a numbered list: "As for 1." when the first one has the same remedy.
QString remedyText(const std::vector<Finding>& findings, std::size_t at);

/// Findings and notes alone, for people, to accompany a table in CSV; empty when there are none.
QString remarksText(const Report& report);

struct ReportFormat
{
    const char* name; ///< as in --format
    QString (*write)(const Report& report);
};

/// The first one is the default.
inline constexpr std::array<ReportFormat, 3> reportFormats = {
    {{"text", reportText}, {"json", reportJson}, {"csv", reportCsv}}};
