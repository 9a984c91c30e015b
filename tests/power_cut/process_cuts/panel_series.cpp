// Starting, killing and checking of a panel.
// SPDX-License-Identifier: MIT
#include "tests/power_cut/process_cuts/panel_series.h"

#include "simulated_host/private_directory.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <new>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Microseconds = std::chrono::microseconds;

QString retentionPath(const char* name)
{
    return QStringLiteral("%1/%2").arg(QLatin1String(fixedProjectDirectory), QLatin1String(name));
}

std::map<QString, QByteArray> retentionFiles()
{
    std::map<QString, QByteArray> files;
    for (const char* const name : retentionFileNames) {
        QFile file(retentionPath(name));
        if (file.open(QIODevice::ReadOnly))
            files[QLatin1String(name)] = file.readAll();
    }
    return files;
}

LengthPromise::Lengths lengthsOf(const std::map<QString, QByteArray>& files)
{
    LengthPromise::Lengths lengths;
    for (const auto& [name, bytes] : files)
        lengths[name] = bytes.size();
    return lengths;
}

/// In units of an undisturbed start. Some cuts are meant for the start-up; on a busy machine all come early.
double randomLife(Random& random)
{
    const double part = random.below(1000) / 1000.0;
    switch (random.below(6)) {
    case 0:
    case 1:
        return 1.5 * part;
    case 2:
        return 1 + 30 * part;
    default:
        return 1 + 10 * part;
    }
}

/// Sleeping alone would end late; the last part is spent awake.
void waitFor(Microseconds time)
{
    const auto end = std::chrono::steady_clock::now() + time;
    if (time > Microseconds(300))
        usleep(static_cast<useconds_t>((time - Microseconds(200)).count()));
    while (std::chrono::steady_clock::now() < end) {
    }
}

} // namespace

PanelSeries::PanelSeries(const ModuleLibrary& library, quint64 seed, quint64 number, SharedLog& log,
                         Evidence& evidence, CutCounts& totals)
    : library(library), seed(seed), number(number), random(seed, number),
      project(number % 3 == 2
                  ? projectOf({})
                  : randomRanges(random, number % 3 == 0 ? ProjectSize::Small : ProjectSize::Large)),
      promise(project), log(log), evidence(evidence), totals(totals)
{
    QDir(QLatin1String(fixedProjectDirectory)).removeRecursively();
}

void PanelSeries::cut()
{
    const double life = randomLife(random);
    const pid_t child = startPanel(true);
    waitFor(std::chrono::duration_cast<Microseconds>(totals.startTime * life));
    kill(child, SIGKILL);
    ++totals.counts.units;
    totals.inStart += !log.started;
    check(child, SIGKILL);
    totals.inChange += log.given > log.kept || log.saving();
    takeLog();
}

void PanelSeries::finish()
{
    check(startPanel(false), 0);
}

int PanelSeries::startPanel(bool working)
{
    ++starts;
    new (&log) SharedLog();
    begin = std::chrono::steady_clock::now();
    const pid_t child = fork();
    if (child < 0)
        giveUp(QStringLiteral("no new process: %1").arg(QString::fromLocal8Bit(std::strerror(errno))));
    if (child == 0)
        live(working);
    return child;
}

/// The life of a panel, in a process of its own. Never returns.
void PanelSeries::live(bool working)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    Random numbers(seed, (number + 1) << 32 | starts);
    SharedLogWriter writer(log);
    Panel panel(library, project.root.get());
    panel.start();
    copyAreas(panel.areas, log.restored);
    log.startTime = std::chrono::steady_clock::now() - begin;
    log.started = true;
    if (working) {
        Load load(panel, project, numbers, writer);
        while (!writer.isFull())
            load.step();
        for (;;)
            pause();
    }
    _exit(0);
}

/// Waits for the end of the panel, which must be by that signal (0: an orderly one), and checks what it
/// restored and left.
void PanelSeries::check(int child, int signal)
{
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    Verdict verdict;
    if (WIFSIGNALED(status) ? WTERMSIG(status) != signal : signal != 0 || WEXITSTATUS(status) != 0)
        verdict.lost.append(QStringLiteral("the panel ended by itself (wait status %1)").arg(status));
    if (log.started) {
        totals.startTime = std::min(totals.startTime, log.startTime);
        MemoryAreas restored;
        copyAreas(log.restored, restored);
        verdict += promise.check(restored);
        promise.restart(restored);
    }
    auto filesNow = retentionFiles();
    verdict += lengths.check(lengthsOf(filesNow));
    lengths.keep(lengthsOf(filesNow));

    totals.counts.synced += log.syncs;
    totals.counts.checked += verdict.checked;
    totals.counts.lost += verdict.lost.size();
    if (!verdict.lost.isEmpty()) {
        const QString title =
            QStringLiteral("start %1 of panel %2, seed %3:").arg(starts).arg(number).arg(seed);
        evidence.add(QStringLiteral("seed-%1-panel-%2-start-%3").arg(seed).arg(number).arg(starts), project,
                     files, QStringList(title) + verdict.lost);
    }
    files = std::move(filesNow);
}

/// What the panel did before it was cut becomes the promise to its next start.
void PanelSeries::takeLog()
{
    for (int i = 0; i < log.given; ++i) {
        const Change& change = log.changes[static_cast<std::size_t>(i)];
        promise.give(change);
        if (i < log.kept)
            promise.keep(change.cell);
    }
    const int completed = log.completedSaves();
    if (completed > 0) {
        promise.beginSave(imagesOf(log.save(completed - 1)));
        promise.completeSave();
    }
    if (log.saving())
        promise.beginSave(imagesOf(log.save(completed)));
}
