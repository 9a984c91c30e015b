// Writing of the map, and the report about it.
// SPDX-License-Identifier: MIT
#ifndef TOOLS_RETENTION_INSPECTOR_MAP_FILE_H
#define TOOLS_RETENTION_INSPECTOR_MAP_FILE_H

#include "tools/retention_core/layout.h"
#include "tools/retention_inspector/invocation.h"

/// Draws the map into `path`, at once or not at all; an existing file is only replaced with `force`. The
/// findings are those of the layout.
CommandResult writeMap(const Layout& layout, const QString& projectFile, const QString& path, bool force);

#endif
