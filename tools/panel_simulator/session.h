// Carries out commands on a simulated panel and tells the user what happened.
// SPDX-License-Identifier: MIT
#pragma once

#include "simulated_host/panel.h"
#include "tools/panel_simulator/command.h"

#include <ostream>

/// The names of the retention files, in the order of MemoryAreas::all().
inline constexpr const char* retentionFileNames[] = {"maintenance-bit.dat", "maintenance-word.dat",
                                                     "maintenance-RWI.dat"};

/// What `command` does to `panel`, with its answer on `out`; `directory` is the folder that the retention
/// files really lie in. PowerCut does not return; Live is the terminal's business and does nothing here.
/// False when the panel is to stop.
bool runCommand(const Command& command, Panel& panel, const QString& directory, std::ostream& out);

/// The chosen mode in words, with its number.
QString modeText(const ExtendFuncModelBase& model);
