// Runs the commands on the panel and composes their answers.
// SPDX-License-Identifier: MIT
#include "tools/panel_simulator/session.h"

#include "poweroff_protect/area_facts.h"
#include "simulated_host/shell.h"

#include <QtCore/QStringList>

#include <algorithm>
#include <csignal>
#include <unistd.h>
#include <utility>

namespace {

std::string text(const QString& line)
{
    return line.toStdString();
}

QString periodText(const ExtendFuncModelBase& model)
{
    if (model.cyclePeriodMs > 0)
        return QStringLiteral("cyclic call every %1 ms, next in %2 ms")
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
        out << "no cells are watched\n";
}

const int mostNamed = 4; // cells, one by one

/// The first of `count` cells, such as "LW 5, LW 6 and 3 more".
QString firstOf(const QStringList& first, qint64 count)
{
    const QString names = first.join(QLatin1String(", "));
    return count > first.size() ? QStringLiteral("%1 and %2 more").arg(names).arg(count - first.size())
                                : names;
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
        return QStringLiteral("whole areas (mode 1)");
    case 2:
        return QStringLiteral("per-address entries (mode 2)");
    default:
        return QStringLiteral("no retention (mode %1)").arg(model.retentionMode);
    }
}

Session::Session(const ModuleLibrary& library, object* project, QString directory)
    : library(library), project(project), directory(std::move(directory))
{
}

void Session::start(std::ostream& out, std::ostream& errors)
{
    current.reset(); // so that the old model closes its files first
    reported = 0;
    lost = 0;
    notSaved.clear();
    current = std::make_unique<Panel>(library, project);
    current->start();
    out << "started: " << text(modeText(*current->model)) << std::endl;
    if (savesWholeAreas() && current->model->cyclePeriodMs <= 0)
        out << "no cyclic calls: the period is " << current->model->cyclePeriodMs << " ms" << std::endl;
    for (std::size_t i = 0; i < retentionFileNames.size(); ++i) {
        const FileOnDisk file = fileOnDisk(i);
        const std::string name = retentionFileNames[i];
        if (!file.problem.isEmpty())
            errors << name << ' ' << text(file.problem) << "; " << text(current->areas.all()[i].name())
                   << " is not retained" << std::endl;
        else if (file.rootOnly)
            errors << name << " is read-only but written anyway, because root ignores file modes"
                   << std::endl;
    }
}

void Session::stop(std::ostream& out) const
{
    const QString unsavedCells = unsavedText();
    out << "stopped";
    if (!unsavedCells.isEmpty())
        out << ", unsaved changes lost in " << text(unsavedCells);
    if (lost > 0)
        out << ", " << lost << " of " << reported << " reported changes were not written";
    out << std::endl;
}

std::vector<int> Session::unsaved(std::size_t area) const
{
    return savesWholeAreas() ? cellsNotInImage(current->areas.all()[area], area) : std::vector<int>();
}

QString Session::unsavedText() const
{
    QStringList first;
    qint64 count = 0;
    for (std::size_t i = 0; i < retentionFileNames.size(); ++i) {
        const MemoryArea& area = current->areas.all()[i];
        for (const int cell : unsaved(i))
            if (++count <= mostNamed)
                first.append(QStringLiteral("%1 %2").arg(area.name()).arg(cell));
    }
    if (count == 0)
        return {};
    return QStringLiteral("%1 %2: %3")
        .arg(count)
        .arg(QLatin1String(count == 1 ? "cell" : "cells"), firstOf(first, count));
}

void Session::set(const Command& command, std::ostream& out)
{
    const auto count = static_cast<qint64>(command.values.size());
    int watched = 0;
    int cell = 0; // the last one that was reported
    int writes = 0;
    std::vector<int> unwritten;
    const auto endReport = [&] {
        if (watched > 0 && written.writes() == writes)
            unwritten.push_back(cell);
        writes = written.writes();
    };
    current->setCells(command.area, command.address, command.values, [&](int done, int all) {
        endReport();
        ++watched;
        cell = command.address + done;
        if (progress)
            progress(done, all);
    });
    endReport();
    const int missed = static_cast<int>(unwritten.size());
    reported += watched;
    lost += missed;
    out << "set " << count << (count == 1 ? " cell, " : " cells, ") << watched << " reported to the module";
    if (watched > 0 && watched < count) {
        const qint64 others = count - watched;
        QStringList first;
        for (int at = command.address; first.size() < std::min<qint64>(others, mostNamed); ++at)
            if (!current->watched.contains(command.area, at))
                first.append(QStringLiteral("%1 %2").arg(command.area).arg(at));
        out << " (not " << text(firstOf(first, others)) << ')';
    }
    if (missed > 0)
        out << ", but only " << watched - missed << " written: not "
            << text(unwrittenText(command.area, unwritten));
    out << '\n';
}

QString Session::unwrittenText(const QString& areaName, const std::vector<int>& cells) const
{
    const auto& areas = current->areas.all();
    const MemoryArea* const area = current->areas.named(areaName);
    QStringList first;
    qint64 others = 0;
    QStringList texts;
    for (const int cell : cells) {
        const QString name = QStringLiteral("%1 %2").arg(areaName).arg(cell);
        if (area->isBits() && cell == ignoredBitAddress)
            texts.append(name + QLatin1String(", because the module never writes changes of this bit"));
        else if (++others <= mostNamed)
            first.append(name);
    }
    if (others > 0)
        texts.append(
            QStringLiteral("%1, because %2")
                .arg(firstOf(first, others), whyNotWritten(static_cast<std::size_t>(area - areas.data()))));
    return texts.join(QLatin1String("; and not "));
}

QString Session::whyNotWritten(std::size_t area) const
{
    const QString problem = fileOnDisk(area).problem;
    return QStringLiteral("%1 %2").arg(
        QLatin1String(retentionFileNames[area]),
        problem.isEmpty()
            ? QStringLiteral("could not be opened or written earlier, and the module does not try again")
            : problem);
}

QString Session::notSavedSince(const WrittenBytes& before) const
{
    QStringList areas;
    for (std::size_t i = 0; i < before.size(); ++i) {
        const MemoryArea& area = current->areas.all()[i];
        if (written.bytes()[i] - before[i] >= qint64(area.memory().size()) && unsaved(i).empty())
            continue;
        areas.append(QStringLiteral("%1 (%2)").arg(area.name(), whyNotWritten(i)));
    }
    return areas.join(QLatin1String(", "));
}

void Session::cycle(std::ostream& out)
{
    const WrittenBytes before = written.bytes();
    current->model->cyclicRun();
    const QString areas = savesWholeAreas() ? notSavedSince(before) : QString();
    if (!savesWholeAreas())
        out << "cyclic call: nothing to save in this mode\n";
    else if (areas.isEmpty())
        out << "cyclic call: areas saved\n";
    else
        out << "cyclic call: not saved: " << text(areas) << '\n';
}

QString Session::advance(long long elapsedMs)
{
    const QString sync = QStringLiteral("sync");
    const WrittenBytes before = written.bytes();
    const int syncs = commandsRun(sync);
    current->advance(elapsedMs);
    if (!savesWholeAreas() || commandsRun(sync) == syncs)
        return {};
    const QString areas = notSavedSince(before);
    if (areas == notSaved)
        return {};
    notSaved = areas;
    return areas.isEmpty() ? QStringLiteral("timed save: areas saved again")
                           : QStringLiteral("timed save: not saved: ") + areas;
}

void Session::status(std::ostream& out) const
{
    out << "mode       " << text(modeText(*current->model)) << '\n';
    out << "period     " << text(periodText(*current->model)) << '\n';
    out << "ready      " << (current->started ? "yes" : "no") << '\n';
    out << "syncs run  " << commandsRun(QStringLiteral("sync")) << '\n';
    if (savesWholeAreas()) {
        const QString cells = unsavedText();
        out << "unsaved    " << (cells.isEmpty() ? "nothing" : text(cells)) << '\n';
    }
    out << "files      in " << text(directory) << '\n';
    for (std::size_t i = 0; i < retentionFileNames.size(); ++i) {
        const FileOnDisk file = fileOnDisk(i);
        out << "           " << text(QStringLiteral("%1").arg(QLatin1String(retentionFileNames[i]), -21));
        if (file.exists)
            out << file.size << " bytes";
        if (!file.problem.isEmpty())
            out << (file.exists ? ", " : "") << text(file.problem);
        out << '\n';
    }
}

QString Session::expect(const Command& command, std::ostream& out) const
{
    const MemoryArea& area = *current->areas.named(command.area);
    QStringList wanted;
    QStringList found;
    for (std::size_t i = 0; i < command.values.size(); ++i) {
        wanted.append(QString::number(command.values[i]));
        found.append(QString::number(*area.cell(command.address + static_cast<int>(i))));
    }
    const QString cells = QStringLiteral("%1 %2: ").arg(command.area).arg(command.address);
    if (found != wanted)
        return QStringLiteral("%1expected %2, found %3")
            .arg(cells, wanted.join(QLatin1String(" ")), found.join(QLatin1String(" ")));
    out << text(cells + found.join(QLatin1String(" "))) << " as expected\n";
    return {};
}

CommandResult Session::run(const Command& command, std::ostream& out, std::ostream& errors)
{
    switch (command.kind) {
    case Command::Kind::Nothing:
    case Command::Kind::Live:
        break;
    case Command::Kind::Get:
        get(command, *current, out);
        break;
    case Command::Kind::Set:
        set(command, out);
        break;
    case Command::Kind::Expect:
        return {true, expect(command, out)};
    case Command::Kind::Cycle:
        cycle(out);
        break;
    case Command::Kind::Watch:
        watch(*current, out);
        break;
    case Command::Kind::Status:
        status(out);
        break;
    case Command::Kind::Restart:
        stop(out);
        start(out, errors);
        break;
    case Command::Kind::PowerCut:
        powerCut(out);
    case Command::Kind::Stop:
        return {false, QString()};
    case Command::Kind::Help:
        out << commandHelp().toStdString();
        break;
    }
    return {};
}
