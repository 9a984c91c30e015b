// A runtime with one project and one cell, for a module that somebody else loaded.
// SPDX-License-Identifier: MIT
#pragma once

#include "poweroff_protect/poweroff_protect.h"

/// Starts the model with a project that keeps the cell "LW" 100, counts in that cell and reports the change:
/// a counter that goes on counting after the power was cut. The file lies in /usr/tavrin/project. The model
/// stays the caller's. The result is 0.
int countOnce(ExtendFuncModelBase* model);
