// Composes the lines of the live view.
// SPDX-License-Identifier: MIT
#include "tools/panel_simulator/live_content.h"

#include "simulated_host/shell.h"

#include <QtCore/QDateTime>

#include <algorithm>

namespace {

const std::size_t mostChanges = 20;
const int widthWithFiles = 74; // of the table of areas

QString agoText(qint64 seconds)
{
    const qint64 hour = 3600;
    const qint64 day = 24 * hour;
    if (seconds < 120)
        return QStringLiteral("%1 s ago").arg(std::max<qint64>(0, seconds));
    if (seconds < 2 * hour)
        return QStringLiteral("%1 min ago").arg(seconds / 60);
    return seconds < 2 * day ? QStringLiteral("%1 h ago").arg(seconds / hour)
                             : QStringLiteral("%1 days ago").arg(seconds / day);
}

QString countdown(const ExtendFuncModelBase& model)
{
    if (model.cyclePeriodMs <= 0)
        return QStringLiteral("no cyclic calls");
    const auto clockTime = [](long long ms) {
        return QStringLiteral("%1:%2").arg(ms / 60000).arg(ms / 1000 % 60, 2, 10, QLatin1Char('0'));
    };
    return QStringLiteral("cyclic call in %1 of %2")
        .arg(clockTime(std::max(0LL, model.cycleRemainingMs)), clockTime(model.cyclePeriodMs));
}

/// One line of the table; `wide` has the file's name and size.
QString tableLine(bool wide, const QString& area, const QString& watched, const QString& set,
                  const QString& unsaved, const QString& file, const QString& bytes, const QString& written)
{
    QString line = QStringLiteral("%1 %2 %3 %4  ").arg(area, -4).arg(watched, 7).arg(set, 8).arg(unsaved, 7);
    if (wide)
        line += QStringLiteral("%1 %2  ").arg(file, -20).arg(bytes, 7);
    return line + written;
}

/// As many of the texts as fit, with a word about the rest.
QString fitting(const QString& head, const QStringList& texts, qint64 count, int width)
{
    QString line = head;
    for (int i = 0; i < texts.size(); ++i) {
        const qint64 rest = count - i;
        const QString more = QStringLiteral("  and %1 more").arg(rest);
        const bool last = i + 1 == count;
        const QString next = QStringLiteral("  ") + texts.at(i);
        if (line.size() + next.size() + (last ? 0 : more.size()) > width)
            return line + more;
        line += next;
    }
    return count > texts.size() ? line + QStringLiteral("  and %1 more").arg(count - texts.size()) : line;
}

} // namespace

void LiveContent::noteChanges()
{
    for (const MemoryArea& area : session.panel().areas.all()) {
        MemoryArea& before = *seen.named(area.name());
        if (before.memory() == area.memory())
            continue;
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

QString LiveContent::changedText(int width) const
{
    QStringList texts;
    for (const Change& change : changes)
        texts.append(QStringLiteral("%1 %2 = %3 (%4)")
                         .arg(change.area)
                         .arg(change.address)
                         .arg(change.value)
                         .arg(agoText(change.since.elapsed() / 1000)));
    QString line = QStringLiteral("changed:");
    for (const QString& text : texts) { // the latest come first, so the rest does not matter
        if (line.size() + 2 + text.size() > width)
            break;
        line += QStringLiteral("  ") + text;
    }
    return line;
}

QStringList LiveContent::lines(int width)
{
    noteChanges();
    const Panel& panel = session.panel();
    const bool images = session.savesWholeAreas();
    const bool wide = width >= widthWithFiles;
    QStringList result;
    QString head = modeText(*panel.model);
    for (const QString& text :
         {countdown(*panel.model), QStringLiteral("syncs %1").arg(commandsRun(QStringLiteral("sync")))})
        if (head.size() + 2 + text.size() <= width)
            head += QStringLiteral("  ") + text;
    result.append(head);
    result.append(tableLine(wide, QStringLiteral("area"), QStringLiteral("watched"),
                            QStringLiteral("not zero"), QStringLiteral("unsaved"), QStringLiteral("file"),
                            QStringLiteral("bytes"), QStringLiteral("written")));
    QStringList unsaved;
    qint64 unsavedCount = 0;
    for (std::size_t i = 0; i < retentionFileNames.size(); ++i) {
        const MemoryArea& area = panel.areas.all()[i];
        int watched = 0;
        for (const WatchedRange& range : panel.watched.ranges())
            if (range.area == area.name())
                watched += range.last - range.first + 1;
        int set = 0;
        for (int address = 0; address < MemoryArea::cellCount; ++address)
            set += area.cell(address).value_or(0) != 0;
        const std::vector<int> cells = session.unsaved(i);
        unsavedCount += qint64(cells.size());
        for (std::size_t j = 0; j < std::min(cells.size(), mostChanges); ++j)
            unsaved.append(QStringLiteral("%1 %2").arg(area.name()).arg(cells[j]));
        const FileOnDisk file = fileOnDisk(i);
        result.append(tableLine(
            wide, area.name(), QString::number(watched), QString::number(set),
            images ? QString::number(cells.size()) : QStringLiteral("-"),
            QLatin1String(retentionFileNames[i]), file.exists ? QString::number(file.size) : QString(),
            !file.problem.isEmpty() ? file.problem.section(QLatin1Char(':'), 0, 0)
                                    : agoText(file.written.secsTo(QDateTime::currentDateTime()))));
    }
    result.append(changedText(width));
    head = QString::fromLatin1(wide ? "changed since the last save:" : "unsaved:");
    if (images)
        result.append(unsavedCount == 0 ? head + QLatin1String(" nothing")
                                        : fitting(head, unsaved, unsavedCount, width));
    for (QString& line : result)
        line.truncate(width);
    return result;
}
