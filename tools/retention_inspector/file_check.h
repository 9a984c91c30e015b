// The command "check": do these files fit this project, and what does the next start make of them?
// SPDX-License-Identifier: MIT
#ifndef TOOLS_RETENTION_INSPECTOR_FILE_CHECK_H
#define TOOLS_RETENTION_INSPECTOR_FILE_CHECK_H

#include "tools/retention_core/kept_values.h"
#include "tools/retention_inspector/report/report.h"

Report checkReport(const Layout& layout, const RetentionFiles& files);

#endif
