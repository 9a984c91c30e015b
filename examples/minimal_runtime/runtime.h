// Declares a minimal runtime with one project and one cell, for a module that the caller loaded.
// SPDX-License-Identifier: MIT
#pragma once

#include "poweroff_protect/poweroff_protect.h"

/// Starts the model with a project that keeps the cell "LW" 100, increments that cell and reports the change:
/// a counter that goes on counting after a power cut. The file is in /usr/tavrin/project. The caller owns the
/// model. Returns 0.
int countOnce(ExtendFuncModelBase* model);
