// Writes reports for people: facts, aligned tables, findings with their remedies.
// SPDX-License-Identifier: MIT
#include "tools/retention_inspector/report/report.h"

#include <algorithm>

namespace {

const int widestLine = 100; // of running text

/// The text in one line, without characters that would move the terminal's cursor.
QString printable(const QString& text)
{
    QString line = text;
    for (QChar& c : line)
        if (c.category() == QChar::Other_Control)
            c = QLatin1Char(' ');
    return line;
}

/// Breaks running text at blanks; every line but the first begins with `indent` blanks.
QString wrapped(const QString& text, int indent)
{
    QString out;
    int column = indent;
    for (const QString& word : printable(text).split(QLatin1Char(' '))) {
        if (column > indent && column + 1 + word.size() > widestLine) {
            out += QLatin1Char('\n') + QString(indent, QLatin1Char(' '));
            column = indent;
        } else if (column > indent) {
            out += QLatin1Char(' ');
            ++column;
        }
        out += word;
        column += word.size();
    }
    return out;
}

bool isNumber(const Value& value)
{
    return value.data.isDouble();
}

struct TextColumn
{
    std::size_t at;
    int width;
    bool right; ///< numbers only
};

std::vector<TextColumn> textColumns(const Table& table)
{
    std::vector<TextColumn> columns;
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
        if (!table.columns[i].title)
            continue;
        TextColumn column{i, static_cast<int>(qstrlen(table.columns[i].title)), !table.rows.empty()};
        for (const auto& row : table.rows) {
            column.width = std::max(column.width, static_cast<int>(row[i].text.size()));
            column.right = column.right && (isNumber(row[i]) || row[i].text.isEmpty());
        }
        columns.push_back(column);
    }
    return columns;
}

template <typename TextOf>
void appendLine(QString& out, const std::vector<TextColumn>& columns, TextOf textOf)
{
    QString line;
    for (const TextColumn& column : columns) {
        const QString text = printable(textOf(column.at));
        line += line.isEmpty() ? QStringLiteral("  ") : QStringLiteral("   ");
        line += column.right ? text.rightJustified(column.width) : text.leftJustified(column.width);
    }
    while (line.endsWith(QLatin1Char(' ')))
        line.chop(1);
    out += line + QLatin1Char('\n');
}

void appendTable(QString& out, const Table& table)
{
    if (table.rows.empty())
        return;
    out += QLatin1Char('\n') + QLatin1String(table.title) + QLatin1Char('\n');
    const std::vector<TextColumn> columns = textColumns(table);
    appendLine(out, columns, [&table](std::size_t i) { return QLatin1String(table.columns[i].title); });
    for (const auto& row : table.rows)
        appendLine(out, columns, [&row](std::size_t i) { return row[i].text; });
}

/// Red for an error, yellow for a warning, both bold.
QString severityText(Finding::Severity severity, bool colour)
{
    const bool error = severity == Finding::Severity::Error;
    const QString word = QString::fromLatin1(error ? "error" : "warning");
    return colour ? QStringLiteral("\033[1;%1m%2\033[0m").arg(error ? 31 : 33).arg(word) : word;
}

void appendFindings(QString& out, const std::vector<Finding>& findings, bool colour)
{
    if (findings.empty())
        return;
    out += QLatin1String("\nFindings\n");
    for (std::size_t i = 0; i < findings.size(); ++i) {
        const Finding& finding = findings[i];
        const QString head =
            QStringLiteral("  %1. %2: ").arg(i + 1).arg(severityText(finding.severity, colour));
        out += head + wrapped(finding.place + QLatin1String(": ") + finding.problem, 5) + QLatin1Char('\n');
        out += QLatin1String("     -> ") + wrapped(remedyText(findings, i), 8) + QLatin1Char('\n');
    }
}

void appendNotes(QString& out, const QStringList& notes)
{
    if (!notes.isEmpty())
        out += QLatin1String("\nNotes\n");
    for (const QString& note : notes)
        out += QLatin1String("  - ") + wrapped(note, 4) + QLatin1Char('\n');
}

} // namespace

QString remedyText(const std::vector<Finding>& findings, std::size_t at)
{
    const auto first = std::find_if(findings.begin(), findings.end(), [&](const Finding& finding) {
        return finding.remedy == findings[at].remedy;
    });
    const auto number = static_cast<std::size_t>(first - findings.begin());
    return number == at ? findings[at].remedy : QStringLiteral("As for %1.").arg(number + 1);
}

QString remarksText(const Report& report)
{
    QString out;
    appendFindings(out, report.findings, report.colour);
    appendNotes(out, report.notes);
    return out.mid(1);
}

QString reportText(const Report& report)
{
    QString out;
    int width = 0;
    for (const Fact& fact : report.facts)
        width = std::max(width, static_cast<int>(qstrlen(fact.title)));
    for (const Fact& fact : report.facts)
        if (fact.title)
            out += QString::fromLatin1(fact.title).leftJustified(width + 3) + printable(fact.value.text) +
                   QLatin1Char('\n');
    if (report.findingsFirst)
        appendFindings(out, report.findings, report.colour);
    for (const Table& table : report.tables)
        if (table.title)
            appendTable(out, table);
    if (!report.findingsFirst)
        appendFindings(out, report.findings, report.colour);
    if (report.isClean())
        out += QLatin1String("\nNo findings.\n");
    appendNotes(out, report.notes);
    return out;
}
