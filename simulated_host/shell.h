// Controls the shell through which models run commands.
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QString>

#include <functional>

/// Replaces the function that runs commands, initially std::system(). An empty function runs nothing and
/// returns 0. Commands are counted and logged in any case.
void setCommandRunner(std::function<int(const char*)> runner);

/// How often a command was run since the process started.
int commandsRun(const QString& command);
