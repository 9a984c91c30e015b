// The command "diff": kept values that differ between two sets of files of one project.
// SPDX-License-Identifier: MIT
#ifndef TOOLS_RETENTION_INSPECTOR_DIFFERENCE_H
#define TOOLS_RETENTION_INSPECTOR_DIFFERENCE_H

#include "tools/retention_core/kept_values.h"
#include "tools/retention_inspector/report/report.h"

/// A cell with a value on one side only differs, too.
Report differenceReport(const Layout& layout, const RetentionFiles& first, const RetentionFiles& second);

#endif
