// Writes a command's product to the file that the user named.
// SPDX-License-Identifier: MIT
#pragma once

#include "tools/retention_inspector/report/report.h"

/// Writes the file completely or not at all, and replaces an existing one only with `force`; "-" is standard
/// output. Throws a Refusal.
void deliver(const QByteArray& product, const QString& path, bool force, Report& report);

/// The place where deliver() put the product.
Value placeText(const QString& path);
