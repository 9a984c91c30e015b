// The command "layout": mode, files, blocks and what becomes of each entry.
// SPDX-License-Identifier: MIT
#ifndef TOOLS_RETENTION_INSPECTOR_LAYOUT_REPORT_H
#define TOOLS_RETENTION_INSPECTOR_LAYOUT_REPORT_H

#include "tools/retention_core/layout.h"
#include "tools/retention_inspector/report/report.h"

Report layoutReport(const Layout& layout);

/// "whole areas", "per-address entries" or "none".
QString modeText(RetentionMode mode);
/// "whole-area", "per-address" or "none".
QString modeKey(RetentionMode mode);
/// The mode, as every report begins.
Fact modeFact(RetentionMode mode);

#endif
