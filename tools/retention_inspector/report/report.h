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

/// One value in the form for scripts and in the form for people.
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
    const char* title; ///< in the text; null leaves the fact out of it
    Value value;
};

struct Column
{
    const char* key;             ///< in JSON and CSV; null leaves the column out of them
    const char* title = nullptr; ///< in the text; null leaves the column out of it
};

struct Table
{
    const char* key;    ///< in JSON and for --table; null leaves the table out of JSON and CSV
    const char* record; ///< first field of each line where all tables are in one CSV
    const char* title;  ///< null leaves the table out of the text
    std::vector<Column> columns;
    std::vector<std::vector<Value>> rows = {};
};

struct Report
{
    QString command;
    std::vector<Fact> facts;
    std::vector<Table> tables;
    std::vector<Finding> findings;
    QStringList notes;    ///< what else the user should know; no reason to change anything
    bool differs = false; ///< the tables themselves are what was looked for: differences
    QByteArray product; ///< UTF-8 for standard output; the report then goes to standard error. Null for none
    bool findingsFirst = false; ///< in the text: they say whether the tables can be trusted
    QString csvTable;           ///< key of the table that CSV is to show; empty for the first with rows
    bool colour = false;        ///< of severities in the text

    void addNote(const QString& note) ///< unless it is empty
    {
        if (!note.isEmpty())
            notes.append(note);
    }
    bool isClean() const { return findings.empty() && !differs; }
};

/// The whole report, ending with a line feed.
QString reportText(const Report& report);
QString reportJson(const Report& report);
/// One table of the report, with a line of names: `csvTable`, "findings" or "facts"; or "all" of them, each
/// line with its kind at its head. Throws a Refusal when there is no such table.
QString reportCsv(const Report& report);

/// Findings and notes alone, for people, to stand beside a table in CSV; empty when there are none.
QString remarksText(const Report& report);

struct ReportFormat
{
    const char* name; ///< as in --format
    QString (*write)(const Report& report);
};

/// The first one is the usual one.
inline constexpr std::array<ReportFormat, 3> reportFormats = {
    {{"text", reportText}, {"json", reportJson}, {"csv", reportCsv}}};
