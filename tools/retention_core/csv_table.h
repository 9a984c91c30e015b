// Reads tables that people keep in spreadsheets, and writes fields that spreadsheets read.
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QHash>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <vector>

/// A CSV file with a heading line of column names.
struct CsvTable
{
    struct Row
    {
        int line = 0; ///< of the file, from 1; where the row ends
        QStringList fields;
    };

    QString fileName;           ///< for messages
    QHash<QString, int> places; ///< of the columns, by name in lower case
    std::vector<Row> rows;      ///< without empty ones

    bool has(const char* column) const { return places.contains(QLatin1String(column)); }
    /// The field of a column, unchanged; empty where the row or the table lacks it.
    QString field(const Row& row, const char* column) const;
    /// A prefix for messages, such as "tags.csv:7: ".
    QString at(const Row& row) const { return QStringLiteral("%1:%2: ").arg(fileName).arg(row.line); }
};

/// Reads UTF-8, with or without a byte-order mark. Fields are separated by commas, semicolons or tabs,
/// whichever the first line uses. "-" is standard input. Throws a Refusal, with file and line, when the file
/// cannot be read, is not CSV, lacks one of the `required` columns, names a column twice or has a row with
/// too many fields. Other columns are kept.
CsvTable readCsvTable(const QString& path, const QStringList& required);

/// The text as one field, in quotation marks where it needs them.
QString csvField(const QString& text);

/// A spreadsheet takes text that begins with =, +, -, @ or a control character for a formula. An apostrophe
/// in front makes it plain text; plainText() removes it again.
QString withoutFormula(const QString& text);
QString plainText(const QString& text);
