// Runs the commands on the panel and words their answers.
// SPDX-License-Identifier: MIT
#include "tools/panel_simulator/session.h"

#include "simulated_host/private_directory.h"
#include "simulated_host/shell.h"

#include <QtCore/QFileInfo>
#include <QtCore/QStringList>

#include <algorithm>
#include <csignal>
#include <unistd.h>

namespace {

std::string text(const QString& line)
{
    return line.toStdString();
}

QString periodText(const ExtendFuncModelBase& model)
{
    if (model.cyclePeriodMs > 0)
        return QStringLiteral("a cyclic call every %1 ms, the next in %2 ms")
            .arg(model.cyclePeriodMs)
            .arg(model.cycleRemainingMs);
    return QStringLiteral("no cyclic calls, because the period is %1 ms").arg(model.cyclePeriodMs);
}

void get(const Command& command, const Panel& panel, std::ostream& out)
{
    const MemoryArea& area = *panel.areas.named(command.area);
    const int valuesInLine = area.isBits() ? 32 : 10;
    for (int first = 0; first < command.count; first += valuesInLine) {
        out << text(command.area) << ' ' << command.address + first << ':';
        for (int j = first; j < std::min(first + valuesInLine, command.count); ++j)
            out << ' ' << *area.cell(command.address + j);
        out << '\n';
    }
}

void set(const Command& command, Panel& panel, std::ostream& out)
{
    const int count = static_cast<int>(command.values.size());
    int reported = 0;
    for (int j = 0; j < count; ++j)
        reported += panel.watched.contains(command.area, command.address + j);
    panel.setCells(command.area, command.address, command.values);
    out << "set " << count << (count == 1 ? " cell, " : " cells, ") << reported
        << " reported to the module\n";
}

void cycle(Panel& panel, std::ostream& out)
{
    const int before = commandsRun(QStringLiteral("sync"));
    panel.model->cyclicRun();
    const bool saved = commandsRun(QStringLiteral("sync")) != before;
    out << (saved ? "cyclic call: the areas were saved\n" : "cyclic call: nothing to save in this mode\n");
}

void watch(const Panel& panel, std::ostream& out)
{
    const auto ranges = panel.watched.ranges();
    for (const WatchedRange& range : ranges) {
        out << text(range.area) << ' ' << range.first;
        if (range.last != range.first)
            out << " to " << range.last;
        out << '\n';
    }
    if (ranges.empty())
        out << "nothing is watched\n";
}

void status(const Panel& panel, const QString& directory, std::ostream& out)
{
    out << "mode       " << text(modeText(*panel.model)) << '\n';
    out << "period     " << text(periodText(*panel.model)) << '\n';
    out << "ready      " << (panel.started ? "yes" : "no") << '\n';
    out << "syncs run  " << commandsRun(QStringLiteral("sync")) << '\n';
    out << "files      in " << text(directory) << '\n';
    for (const char* name : retentionFileNames) {
        const QFileInfo file(
            QStringLiteral("%1/%2").arg(QLatin1String(fixedProjectDirectory), QLatin1String(name)));
        out << "           " << text(QStringLiteral("%1").arg(QLatin1String(name), -21));
        if (file.exists())
            out << file.size() << " bytes\n";
        else
            out << "missing\n";
    }
}

[[noreturn]] void powerCut(std::ostream& out)
{
    out << "power cut" << std::endl;
    kill(getpid(), SIGKILL);
    for (;;)
        pause();
}

} // namespace

QString modeText(const ExtendFuncModelBase& model)
{
    switch (model.retentionMode) {
    case 1:
        return QStringLiteral("whole areas (1)");
    case 2:
        return QStringLiteral("per-address entries (2)");
    default:
        return QStringLiteral("no retention (%1)").arg(model.retentionMode);
    }
}

bool runCommand(const Command& command, Panel& panel, const QString& directory, std::ostream& out)
{
    switch (command.kind) {
    case Command::Kind::Nothing:
    case Command::Kind::Live:
        break;
    case Command::Kind::Get:
        get(command, panel, out);
        break;
    case Command::Kind::Set:
        set(command, panel, out);
        break;
    case Command::Kind::Cycle:
        cycle(panel, out);
        break;
    case Command::Kind::Watch:
        watch(panel, out);
        break;
    case Command::Kind::Status:
        status(panel, directory, out);
        break;
    case Command::Kind::PowerCut:
        powerCut(out);
    case Command::Kind::Stop:
        return false;
    case Command::Kind::Help:
        out << commandHelp().toStdString();
        break;
    }
    return true;
}
