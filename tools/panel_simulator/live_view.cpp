// Draws the live view with the terminal's scrolling region.
// SPDX-License-Identifier: MIT
#include "tools/panel_simulator/live_view.h"

#include "simulated_host/private_directory.h"
#include "simulated_host/shell.h"
#include "tools/panel_simulator/session.h"

#include <QtCore/QDateTime>
#include <QtCore/QFileInfo>

#include <algorithm>
#include <iostream>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

const int height = 6;              // lines of the view, its lower edge included
const std::size_t mostChanges = 6; // as many as fit into one line of usual width

winsize terminalSize()
{
    winsize size = {};
    ioctl(STDOUT_FILENO, TIOCGWINSZ, &size);
    return size;
}

QString countdown(const ExtendFuncModelBase& model)
{
    if (model.cyclePeriodMs <= 0)
        return QStringLiteral("no cyclic calls");
    const auto clockTime = [](long long ms) {
        return QStringLiteral("%1:%2").arg(ms / 60000).arg(ms / 1000 % 60, 2, 10, QLatin1Char('0'));
    };
    return QStringLiteral("next cyclic call in %1 of %2")
        .arg(clockTime(std::max(0LL, model.cycleRemainingMs)), clockTime(model.cyclePeriodMs));
}

QString fileText(const QString& name)
{
    const QFileInfo file(QStringLiteral("%1/%2").arg(QLatin1String(fixedProjectDirectory), name));
    if (!file.exists())
        return QStringLiteral("%1 missing").arg(name);
    return QStringLiteral("%1 %2 bytes, written %3 s ago")
        .arg(name, -20)
        .arg(file.size())
        .arg(std::max<qint64>(0, file.lastModified().secsTo(QDateTime::currentDateTime())));
}

QString areaText(const Panel& panel, const MemoryArea& area, const QString& file)
{
    int watched = 0;
    for (const WatchedRange& range : panel.watched.ranges())
        if (range.area == area.name())
            watched += range.last - range.first + 1;
    int set = 0;
    for (int address = 0; address < MemoryArea::cellCount; ++address)
        set += area.cell(address).value_or(0) != 0;
    return QStringLiteral("%1 %2 cells watched, %3 not zero   %4")
        .arg(area.name(), -3)
        .arg(watched, 5)
        .arg(set, 5)
        .arg(fileText(file));
}

} // namespace

bool LiveView::show()
{
    if (!isatty(STDOUT_FILENO) || terminalSize().ws_row < 2 * height)
        return false;
    shown = true;
    seen = panel.areas;
    changes.clear();
    // Commands scroll below the view.
    std::cout << "\033[2J\033[" << height + 1 << "r\033[" << height + 1 << ";1H";
    draw();
    return true;
}

void LiveView::hide()
{
    if (shown)
        std::cout << "\0337\033[r\033[" << height << ";1H\033[1J\0338" << std::flush;
    shown = false;
}

void LiveView::draw()
{
    if (!shown)
        return;
    noteChanges();
    const int width = terminalSize().ws_col;
    std::cout << "\0337"; // the cursor goes back to the command line afterwards
    int row = 0;
    for (const QString& line : lines())
        std::cout << "\033[" << ++row << ";1H\033[K" << line.left(width).toStdString();
    std::cout << "\0338" << std::flush;
}

void LiveView::noteChanges()
{
    for (const MemoryArea& area : panel.areas.all()) {
        MemoryArea& before = *seen.named(area.name());
        for (int address = 0; address < MemoryArea::cellCount; ++address) {
            const ushort value = area.cell(address).value_or(0);
            if (before.cell(address) == value)
                continue;
            before.setCell(address, value);
            Change change = {area.name(), address, value, QElapsedTimer()};
            change.since.start();
            changes.push_front(change);
        }
    }
    changes.resize(std::min(changes.size(), mostChanges));
}

QStringList LiveView::lines() const
{
    QStringList result;
    result.append(QStringLiteral("%1   %2   syncs run %3")
                      .arg(modeText(*panel.model), countdown(*panel.model))
                      .arg(commandsRun(QStringLiteral("sync"))));
    const auto& areas = panel.areas.all();
    for (std::size_t i = 0; i < areas.size(); ++i)
        result.append(areaText(panel, areas[i], QLatin1String(retentionFileNames[i])));
    QStringList recent;
    for (const Change& change : changes)
        recent.append(QStringLiteral("%1 %2 = %3 (%4 s)")
                          .arg(change.area)
                          .arg(change.address)
                          .arg(change.value)
                          .arg(change.since.elapsed() / 1000));
    result.append(QStringLiteral("changed   ") + recent.join(QLatin1String("   ")));
    result.append(QString(200, QLatin1Char('-')));
    return result;
}
