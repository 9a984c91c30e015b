// What in a project's retention settings should be changed, and how.
// SPDX-License-Identifier: MIT
#ifndef TOOLS_RETENTION_INSPECTOR_LAYOUT_FINDINGS_H
#define TOOLS_RETENTION_INSPECTOR_LAYOUT_FINDINGS_H

#include "tools/retention_core/entry_verdict.h"
#include "tools/retention_inspector/report/report.h"

#include <vector>

/// About the mode, the save period and the "DataRetention" object as a whole.
std::vector<Finding> settingsFindings(const ProjectSettings& settings);
/// About single entries, and entries that lose cells to each other.
std::vector<Finding> entryFindings(const Layout& layout, const std::vector<EntryVerdict>& verdicts);

#endif
