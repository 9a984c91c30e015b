// Parses addresses and moves.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/cell_words.h"

#include "tools/numbers.h"
#include "tools/retention_core/refusal.h"

#include <QtCore/QStringList>

namespace {

/// Parses "AREA:ADDRESSES"; without an area, uses the one given.
struct AreaCells
{
    const AreaFacts* area;
    std::optional<CellRange> cells;
};

AreaCells areaCells(const QString& text, const AreaFacts* usual)
{
    const int colon = text.indexOf(QLatin1Char(':'));
    return {colon < 0 ? usual : areaNamed(text.left(colon)), addressRange(text.mid(colon + 1))};
}

} // namespace

std::optional<CellRange> addressRange(const QString& text)
{
    const QStringList ends = text.split(QLatin1Char('-'));
    const std::optional<qint64> first = wholeNumber(ends.first(), 0, 65535);
    const std::optional<qint64> last = wholeNumber(ends.last(), 0, 65535);
    if (ends.size() > 2 || !first || !last || *first > *last)
        return std::nullopt;
    return CellRange{*first, *last};
}

CellMove cellMove(const QString& text)
{
    const auto refuse = [&text](const QString& problem) {
        throw Refusal(QStringLiteral("--move \"%1\": %2").arg(text, problem));
    };
    const QStringList sides = text.split(QLatin1Char('='));
    const AreaCells source = areaCells(sides.first(), nullptr);
    const AreaCells target = areaCells(sides.last(), source.area);
    if (sides.size() != 2 || !source.area || !source.cells || !target.area || !target.cells)
        refuse(QStringLiteral("expected the old cells and the first new cell, such as LW:100-109=LW:300"));
    const CellMove move = {source.area, *source.cells, target.area, target.cells->first};
    const qint64 ends[] = {move.target, move.targets().last};
    if (target.cells->last != ends[0] && target.cells->last != ends[1])
        refuse(QStringLiteral("the two sides differ in length"));
    if (move.from->bits != move.to->bits)
        refuse(QStringLiteral("cells cannot move between bits and words"));
    if (move.targets().last >= cellCount(*move.to))
        refuse(QStringLiteral("the new cells extend beyond the end of the area, %1")
                   .arg(cellCount(*move.to) - 1));
    return move;
}

QString moveText(const CellMove& move)
{
    return QStringLiteral("%1 %2 -> %3 %4")
        .arg(QLatin1String(move.from->name), rangeText(move.source), QLatin1String(move.to->name),
             rangeText(move.targets()));
}
