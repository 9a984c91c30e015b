// Runs and counts shell commands.
// SPDX-License-Identifier: MIT
#include "simulated_host/shell.h"

#include "host_interface/shell.h"
#include "simulated_host/call_log.h"

#include <QtCore/QHash>

#include <cstdlib>
#include <utility>

namespace {

std::function<int(const char*)> commandRunner = [](const char* command) { return std::system(command); };

QHash<QString, int>& commandCounts()
{
    static QHash<QString, int> counts;
    return counts;
}

} // namespace

void setCommandRunner(std::function<int(const char*)> runner)
{
    commandRunner = std::move(runner);
}

int commandsRun(const QString& command)
{
    return commandCounts().value(command);
}

int sys_base_do_system(const char* command)
{
    logCall([&] { return QLatin1String(command); });
    ++commandCounts()[QLatin1String(command)];
    return commandRunner ? commandRunner(command) : 0;
}
