// The command "map": a picture of the three files.
// SPDX-License-Identifier: MIT
#ifndef TOOLS_RETENTION_INSPECTOR_REPORT_MAP_PICTURE_H
#define TOOLS_RETENTION_INSPECTOR_REPORT_MAP_PICTURE_H

#include "tools/retention_core/layout.h"

#include <QtCore/QByteArray>

/// An SVG document: for each area its range to scale, then its blocks in the order of the file with addresses
/// at their edges, and the configured cells that are not retained, hatched. `title` is put at the top.
QByteArray mapSvg(const Layout& layout, const QString& title);

#endif
