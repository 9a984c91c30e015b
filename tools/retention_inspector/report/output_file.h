// Puts what a command made where its user wants it.
// SPDX-License-Identifier: MIT
#pragma once

#include "tools/retention_inspector/command.h"

/// Writes to the file of the option "output" at once or not at all, and over an existing one only with the
/// option "force"; "-" is standard output. Throws a Refusal.
void deliver(const QByteArray& product, const Inputs& inputs, Report& report);
