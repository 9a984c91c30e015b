// Parses cells as people write them: addresses, ranges, areas and ranges that move.
// SPDX-License-Identifier: MIT
#pragma once

#include "poweroff_protect/area_facts.h"
#include "tools/retention_core/cell_ranges.h"

#include <optional>
#include <vector>

/// Parses text such as "100", "0x64" or "100-109", within 0 to 65535. Nothing for any other text.
std::optional<CellRange> addressRange(const QString& text);

/// Cells of one area that go to other places, one for one.
struct CellMove
{
    const AreaFacts* from = nullptr;
    CellRange source = {0, -1};
    const AreaFacts* to = nullptr;
    qint64 target = 0; ///< where the first cell of `source` goes

    CellRange targets() const { return {target, target + source.last - source.first}; }
};

/// Parses text such as "LW:100-109=LW:300" or, within one area, "LW:100-109=300". Throws a Refusal for any
/// other text, for moves between bits and words, and when the target leaves its area.
CellMove cellMove(const QString& text);

/// Such as "LW 100 to 109 -> LW 300 to 309".
QString moveText(const CellMove& move);
