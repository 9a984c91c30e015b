// Checks that a report says the same in each of its formats.
// SPDX-License-Identifier: MIT
#pragma once

#include "tools/retention_inspector/report/report.h"

#include <QtCore/QJsonObject>

/// Ends the run unless JSON and CSV can be parsed, hold every fact, row and finding of the report, and agree
/// value by value, and unless the text is plain lines. Returns what the JSON holds.
QJsonObject checkFormats(const Report& report);
