// Compares the cells and findings of two reports.
// SPDX-License-Identifier: MIT
#include "tools/retention_inspector/report/changes.h"

#include <algorithm>
#include <map>
#include <utility>

namespace {

using Cell = std::pair<QString, qint64>; // area and address

/// The values in the table "cells", whose columns begin with area, address and value.
std::map<Cell, QString> cellsOf(const Report& report)
{
    std::map<Cell, QString> cells;
    for (const Table& table : report.tables)
        if (qstrcmp(table.key, "cells") == 0)
            for (const auto& row : table.rows)
                cells[{row[0].text, row[1].text.toLongLong()}] =
                    row[2].text.isEmpty() ? QStringLiteral("no value") : row[2].text;
    return cells;
}

QString lineOf(const Finding& finding)
{
    return finding.place + QLatin1String(": ") + finding.problem;
}

bool contains(const Report& report, const Finding& finding)
{
    return std::any_of(report.findings.begin(), report.findings.end(),
                       [line = lineOf(finding)](const Finding& other) { return lineOf(other) == line; });
}

} // namespace

QString changesText(const Report& before, const Report& after, const QTime& time)
{
    QString out;
    const QString clock = time.toString(QStringLiteral("HH:mm:ss  "));
    const std::map<Cell, QString> old = cellsOf(before);
    const std::map<Cell, QString> now = cellsOf(after);
    const auto valueIn = [](const std::map<Cell, QString>& cells, const Cell& cell) {
        const auto found = cells.find(cell);
        // Only zeros are left out of a list.
        return found == cells.end() ? QStringLiteral("0") : found->second;
    };
    std::map<Cell, QString> either = old;
    either.insert(now.begin(), now.end());
    for (const auto& [cell, value] : either)
        if (valueIn(old, cell) != valueIn(now, cell))
            out += QStringLiteral("%1%2 %3: %4 -> %5\n")
                       .arg(clock, cell.first, QString::number(cell.second), valueIn(old, cell),
                            valueIn(now, cell));
    for (const Finding& finding : after.findings)
        if (!contains(before, finding))
            out += clock + lineOf(finding) + QLatin1Char('\n');
    for (const Finding& finding : before.findings)
        if (!contains(after, finding))
            out += clock + QLatin1String("no longer: ") + lineOf(finding) + QLatin1Char('\n');
    return out;
}
