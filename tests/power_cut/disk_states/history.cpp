// Goes through the cut points of a panel's lives.
// SPDX-License-Identifier: MIT
#include "tests/power_cut/disk_states/history.h"

#include "tests/power_cut/disk_states/cut_states.h"
#include "tests/power_cut/disk_states/recorder.h"

namespace {

const int samplesOfCutPoint = 24;
/// About the largest number per life, so that there are many lives.
const int cutPointsOfLife = 25;

/// Earlier files: missing, empty, shorter, longer, as long as those of this mode or of the other one. Never
/// half a word at the end of a file, which the module never writes: it could come back with half a change.
DiskImage randomFiles(const RetainedCells& cells, RandomSource& random)
{
    DiskImage image;
    image.directory = true;
    for (std::size_t area = 0; area < 3; ++area) {
        const int imageBytes = area == 0 ? 65536 : 131072;
        const int count = cells.count(area);
        const int rangesBytes = area == 0 ? count / 8 + 1 : 2 * count;
        const int own = cells.wholeAreas ? imageBytes : rangesBytes;
        const std::vector<int> lengths = {-1,
                                          0,
                                          random.below(own + 1),
                                          own,
                                          own + random.between(1, 600),
                                          cells.wholeAreas ? random.below(2000) : imageBytes};
        const int length = random.oneOf(lengths);
        if (length < 0)
            continue;
        QByteArray bytes(cells.wholeAreas ? length : length & ~1, '\0');
        for (char& byte : bytes)
            byte = static_cast<char>(random.oneIn(4) ? 0 : random.below(256));
        image.files[QLatin1String(testAreas[area].fileName)] = bytes;
    }
    return image;
}

} // namespace

qint64 Totals::states() const
{
    qint64 sum = 0;
    for (const OfKind& kind : kinds)
        sum += kind.states;
    return sum;
}

Totals runHistories(const ModuleLibrary& library, const RunPlan& plan, Findings& findings,
                    const std::function<void(qint64)>& progress)
{
    const qint64 states = plan.states;
    // A start with a long bit file costs as much as twenty others.
    const History::Kind manyRanges = {ProjectKind::ManyRanges, false, states};
    const History::Kind fewRanges = {ProjectKind::FewRanges, false, states};
    const History::Kind overlapping = {ProjectKind::OverlappingRanges, false, states};
    const History::Kind longBlocks = {ProjectKind::LongBlocks, false, states / 40 + 1};
    const History::Kind wholeAreas = {ProjectKind::WholeAreas, false, states / 3};
    const History::Kind turns[] = {manyRanges, wholeAreas, longBlocks, overlapping,
                                   fewRanges,  manyRanges, wholeAreas, overlapping};
    Totals totals;
    for (quint64 number = 0; totals.states() < states && !(plan.stopWhenLost && findings.lost() > 0);
         ++number) {
        History::Kind kind = turns[number % 8];
        kind.longLife = number % 64 < 2;
        History(library, plan, number, kind, findings, totals).run();
        progress(totals.states());
    }
    return totals;
}

History::History(const ModuleLibrary& library, const RunPlan& plan, quint64 number, Kind kind,
                 Findings& findings, Totals& totals)
    : library(library), plan(plan), number(number), kind(kind), random(plan.seed, number),
      project(randomProject(kind.project, random)), cells(project.cells), findings(findings), totals(totals),
      ofKind(totals.kinds[static_cast<std::size_t>(kind.project)])
{
}

void History::run()
{
    if (isFull() && !kind.longLife)
        return;
    ++totals.panels;
    totals.retainedCells += cells.count(0) + cells.count(1) + cells.count(2);
    if (random.oneIn(2))
        nextStart = randomFiles(cells, random);
    const qint64 lostBefore = findings.lost();
    for (int left = random.between(1, 4); left > 0 && findings.lost() == lostBefore; --left)
        live();
}

bool History::isFull() const
{
    return ofKind.states >= kind.mostStates || totals.states() >= plan.states ||
           (plan.stopWhenLost && findings.lost() > 0);
}

LifePlan History::planOfLife()
{
    LifePlan life;
    switch (kind.project) {
    case ProjectKind::FewRanges:
    case ProjectKind::WholeAreas:
        life.steps = random.between(1, 4);
        break;
    case ProjectKind::OverlappingRanges:
        life.steps = random.between(2, 10);
        break;
    case ProjectKind::ManyRanges:
        life.steps = random.between(10, 40);
        break;
    case ProjectKind::LongBlocks:
        life.steps = random.between(4, 8);
    }
    if (kind.longLife && lives == 1) {
        life.changes = cells.wholeAreas ? plan.savesOfLongLife : plan.changesOfLongLife;
        life.windowBegin = random.between(life.changes / 2, life.changes - 20);
        life.windowSteps = 3;
    }
    return life;
}

void History::live()
{
    ++lives;
    statesOfLife = 0;
    checked.clear();
    const DiskImage found = nextStart;
    life = recordLife(library, project.root.get(), cells, found, planOfLife(), random);
    totals.kept += life->kept;
    int& most = cells.wholeAreas ? totals.mostSaves : totals.mostChanges;
    most = std::max(most, life->kept);
    if (!life->lost.isEmpty()) {
        report(QStringLiteral("while it worked"), life->lost, found.files, life->events.size());
        return;
    }
    LifeState state = life->begin;
    const int eventsOfCut = 1 + static_cast<int>(life->events.size()) / cutPointsOfLife;
    for (std::size_t i = 0; i < life->events.size() && !isFull(); ++i) {
        const Event& event = life->events[i];
        state.apply(event);
        // Everything written is promised now, so every state must be checked again.
        if (event.kind == Event::Kind::End)
            checked.clear();
        if (random.oneIn(eventsOfCut))
            cutHere(state, i + 1);
    }
}

void History::cutHere(const LifeState& state, std::size_t eventsDone)
{
    ++totals.cutPoints;
    totals.exhausted +=
        forEachCutState(state.synced, state.unsynced, random, samplesOfCutPoint, [&](const DiskImage& image) {
            if (!isFull() && checked.insert(image.hash()).second)
                startOn(state, image, eventsDone, false);
        });
    if (!isFull() && random.oneIn(16))
        if (const auto image = withSpoiledPages(state.synced, state.unsynced, random))
            startOn(state, *image, eventsDone, true);
}

void History::startOn(const LifeState& state, const DiskImage& image, std::size_t eventsDone, bool spoiled)
{
    const Verdict verdict = state.promise.check(image.files, state.judged(image));
    QStringList lost;
    if (spoiled) {
        ++totals.spoiled.states;
        totals.spoiled.atStake += verdict.checked;
        totals.spoiledLost += verdict.lost.size();
    } else {
        ++ofKind.states;
        ofKind.atStake += state.promise.keptInLife();
        totals.compared += verdict.checked;
        lost = state.shortened(image.files) + verdict.lost;
        ++statesOfLife;
        if (random.oneIn(static_cast<int>(statesOfLife)))
            nextStart = image;
    }
    writeProjectDirectory(image);
    {
        Panel panel(library, project.root.get());
        lost += startPanel(panel, cells, image.files, random);
    }
    if (!lost.isEmpty())
        report(QStringLiteral("cut after event %1").arg(life->eventsBefore + static_cast<int>(eventsDone)),
               lost, image.files, eventsDone);
}

void History::report(const QString& when, const QStringList& lost, const Files& files, std::size_t eventsDone)
{
    const QString title = QStringLiteral("life %1 of panel %2 (%3), seed %4, %5:")
                              .arg(lives)
                              .arg(number)
                              .arg(QLatin1String(projectKindNames[static_cast<int>(kind.project)]))
                              .arg(plan.seed)
                              .arg(when);
    QStringList events;
    for (const auto& [name, file] : life->begin.written().names)
        events += QStringLiteral("  file %1 is %2").arg(file).arg(name);
    for (std::size_t i = 0; i < eventsDone; ++i)
        events += QStringLiteral("  %1  %2")
                      .arg(life->eventsBefore + static_cast<int>(i) + 1)
                      .arg(life->events[i].text());
    findings.add({QStringLiteral("seed-%1-panel-%2-life-%3-event-%4")
                      .arg(plan.seed)
                      .arg(number)
                      .arg(lives)
                      .arg(eventsDone),
                  title, lost, events, project.xml, files});
}
