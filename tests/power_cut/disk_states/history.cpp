// Going through the cut points of a panel's lives.
// SPDX-License-Identifier: MIT
#include "tests/power_cut/disk_states/history.h"

#include "tests/power_cut/disk_states/cut_states.h"
#include "tests/power_cut/disk_states/recorder.h"

namespace {

const int samplesOfCutPoint = 24;

PanelProject projectOfHistory(quint64 number, Random& random)
{
    switch (number % 4) {
    case 0:
    case 1:
        return randomRanges(random, ProjectSize::Small);
    case 2:
        return randomRanges(random, ProjectSize::Large);
    default:
        return projectOf({});
    }
}

/// Files of an earlier time: any bytes, and of address ranges any even length. Half a word at the end of a
/// file, which the module never writes, would be no value.
DiskImage randomFiles(const PanelProject& project, Random& random)
{
    DiskImage image;
    image.directory = true;
    for (std::size_t i = 0; i < 3; ++i) {
        const int areaBytes = static_cast<int>(MemoryAreas().all()[i].memory().size());
        QByteArray bytes(project.wholeAreas() ? areaBytes + random.below(600) : 2 * random.below(750), '\0');
        for (char& byte : bytes)
            byte = static_cast<char>(random.oneIn(4) ? 0 : random.below(256));
        image.files[QLatin1String(retentionFileNames[i])] = bytes;
    }
    return image;
}

} // namespace

History::History(const ModuleLibrary& library, quint64 seed, quint64 number, Evidence& evidence,
                 StateCounts& totals)
    : library(library), seed(seed), number(number), random(seed, number),
      project(projectOfHistory(number, random)), promise(project), evidence(evidence), totals(totals)
{
}

void History::run(qint64 mostStates)
{
    most = mostStates;
    if (random.oneIn(3)) {
        nextStart = randomFiles(project, random);
        writeProjectDirectory(nextStart);
        Panel panel(library, project.root.get());
        panel.start();
        nextRestored = panel.areas;
        beginFromNextStart();
    }
    for (int left = random.between(1, 4); left > 0 && totals.counts.units < most; --left)
        live();
}

void History::live()
{
    ++lives;
    statesOfLife = 0;
    checked.clear();
    const int steps = number % 4 == 2 ? random.between(10, 40) : random.between(1, 4);
    life = recordLife(library, project, nextStart, steps, random);
    if (!life.error.isEmpty())
        giveUp(life.error);

    Disk now = life.start;
    Disk synced = life.start;
    std::vector<DiskOp> pending;
    for (std::size_t i = 0; i < life.events.size() && totals.counts.units < most; ++i) {
        const Event& event = life.events[i];
        if (event.kind == Event::Kind::Op) {
            const qint64 length = event.op.isInFile() ? now.files[event.op.file].length : 0;
            const std::vector<DiskOp> atoms = atomsOf(event.op, length);
            pending.insert(pending.end(), atoms.begin(), atoms.end());
            now.apply(event.op);
        } else if (event.kind == Event::Kind::Sync) {
            ++totals.counts.synced;
            pending.clear();
            synced = now;
        }
        applyPromise(event, now);
        cutHere(synced, pending, i + 1);
    }
    if (statesOfLife == 0) // the life changed nothing
        return;
    beginFromNextStart();
}

void History::beginFromNextStart()
{
    promise.restart(nextRestored);
    lengths.keep(nextStart.lengths());
}

void History::applyPromise(const Event& event, const Disk& now)
{
    switch (event.kind) {
    case Event::Kind::Give:
        promise.give(event.change);
        break;
    case Event::Kind::BeginSave:
        promise.beginSave(*event.images);
        break;
    case Event::Kind::Keep:
        if (promisesNothing(event.change.cell))
            break;
        promise.keep(event.change.cell);
        becomeStricter(now);
        break;
    case Event::Kind::CompleteSave:
        promise.completeSave();
        becomeStricter(now);
        break;
    case Event::Kind::Op:
    case Event::Kind::Sync:
        break;
    }
}

/// All that was written is promised now, and every state is to be checked again.
void History::becomeStricter(const Disk& now)
{
    lengths.keep(now.image().lengths());
    checked.clear();
}

void History::cutHere(const Disk& synced, const std::vector<DiskOp>& pending, std::size_t eventsDone)
{
    ++totals.cutPoints;
    const bool complete =
        forEachCutState(synced, pending, random, samplesOfCutPoint, [&](const DiskImage& image) {
            if (totals.counts.units < most && checked.insert(image.hash()).second)
                startOn(image, eventsDone);
        });
    totals.exhausted += complete;
}

void History::startOn(const DiskImage& image, std::size_t eventsDone)
{
    ++totals.counts.units;
    ++statesOfLife;
    writeProjectDirectory(image);
    Verdict verdict = lengths.check(image.lengths());
    {
        Panel panel(library, project.root.get());
        panel.start();
        verdict += promise.check(panel.areas);
        if (random.oneIn(static_cast<int>(statesOfLife))) {
            nextStart = image;
            nextRestored = panel.areas;
        }
    }
    LengthPromise ofState;
    ofState.keep(image.lengths());
    verdict += ofState.check(readProjectDirectory().lengths());

    totals.counts.checked += verdict.checked;
    totals.counts.lost += verdict.lost.size();
    if (verdict.lost.isEmpty())
        return;
    QStringList report = {QStringLiteral("life %1 of panel %2, seed %3, cut after event %4:")
                              .arg(lives)
                              .arg(number)
                              .arg(seed)
                              .arg(eventsDone)};
    report += verdict.lost;
    report += QStringLiteral("Events of this life until the cut:");
    for (std::size_t i = 0; i < eventsDone; ++i)
        report += QStringLiteral("  %1  %2").arg(i + 1).arg(life.events[i].text());
    evidence.add(
        QStringLiteral("seed-%1-panel-%2-life-%3-event-%4").arg(seed).arg(number).arg(lives).arg(eventsDone),
        project, image.files, report);
}
