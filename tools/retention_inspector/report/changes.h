// Words what changed between two reports of the same command, for a user who watches it.
// SPDX-License-Identifier: MIT
#pragma once

#include "tools/retention_inspector/report/report.h"

#include <QtCore/QTime>

/// One line for each cell that changed from one report of "show" to the next, with the time; empty for none.
/// Then a line for each finding that came or went.
QString changesText(const Report& before, const Report& after, const QTime& time);
