// Describes what changed between two reports of the same command, for a user who watches it.
// SPDX-License-Identifier: MIT
#pragma once

#include "tools/retention_inspector/report/report.h"

#include <QtCore/QTime>

/// One line, with the time, for each cell that changed between two reports of "show", then one for each
/// finding that appeared or disappeared. Empty when nothing changed.
QString changesText(const Report& before, const Report& after, const QTime& time);
