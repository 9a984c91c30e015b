// Puts what a command made where its user wants it.
// SPDX-License-Identifier: MIT
#pragma once

#include "tools/retention_inspector/report/report.h"

/// Writes the file at once or not at all, over an existing one only with `force`; "-" is standard output.
/// Throws a Refusal.
void deliver(const QByteArray& product, const QString& path, bool force, Report& report);

/// Where deliver() put it.
Value placeText(const QString& path);
