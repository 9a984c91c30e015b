// The shell that models run commands through.
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QString>

#include <functional>

/// Replaces the running of commands (std::system() at the start); an empty function runs nothing and answers
/// 0. Commands are counted and logged in any case.
void setCommandRunner(std::function<int(const char*)> runner);

/// How often a command was run since the process began.
int commandsRun(const QString& command);
