// The command "show": kept values by address.
// SPDX-License-Identifier: MIT
#ifndef TOOLS_RETENTION_INSPECTOR_SHOW_REPORT_H
#define TOOLS_RETENTION_INSPECTOR_SHOW_REPORT_H

#include "tools/retention_core/kept_values.h"
#include "tools/retention_inspector/report/report.h"

#include <optional>

/// Which of the kept values are wanted.
struct Selection
{
    const AreaFacts* area = nullptr;    ///< null for all areas
    std::optional<CellRange> addresses; ///< nothing for all
};

Report showReport(const Layout& layout, const RetentionFiles& files, const Selection& selection);

/// "kept", "start-value", "no-value" or "not-retained".
QString stateKey(CellState state);

#endif
