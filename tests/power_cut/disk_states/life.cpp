// Records the events of a life as they happen.
// SPDX-License-Identifier: MIT
#include "tests/power_cut/disk_states/life.h"

#include "tests/power_cut/disk_states/recorder.h"

#include <algorithm>

namespace {

const int mostLines = 3;

/// The number of changes after which the whole disk is judged.
const int changesBetweenFullChecks = 1000;

class LifeRecorder : public LoadLog
{
public:
    LifeRecorder(const RetainedCells& cells, const DiskImage& found, const Disk& disk)
        : state(cells, found, disk), life{state, {}, 0, 0, {}}
    {
    }

    void op(const DiskOp& op) { take({Event::Kind::Op, op}); }
    void sync() override { take({Event::Kind::Sync}); }
    void begin(const Write& write) override
    {
        current = std::make_shared<const Write>(write);
        take({Event::Kind::Begin, {}, current});
    }
    void end() override
    {
        take({Event::Kind::End, {}, current});
        ++life.kept;
        checkReturn();
        if (life.kept % changesBetweenFullChecks == 0)
            checkAll();
    }

    void beginWindow() { life.begin = state; }
    bool inWindow = true;

    void checkAll()
    {
        const Verdict verdict = state.promise.check(state.written().image().files);
        lose(QStringLiteral("after change %1 of this life: ").arg(life.kept), verdict.lost);
    }
    void lose(const QString& when, const QStringList& lost)
    {
        for (const QString& line : lost.mid(0, mostLines))
            life.lost.append(when + line);
    }
    /// `found` is the directory before the panel was stopped, `left` after it.
    RecordedLife finish(const DiskImage& found, const DiskImage& left)
    {
        const DiskImage recorded = state.written().image();
        if (recorded.directory != found.directory || recorded.files != found.files)
            life.lost.append(QStringLiteral("the module changed files in a way that is not recorded"));
        if (left.files != found.files)
            life.lost.append(QStringLiteral("the end of the module changed files"));
        return std::move(life);
    }
    const RecordedLife& soFar() const { return life; }

private:
    void take(const Event& event)
    {
        state.apply(event);
        if (inWindow)
            life.events.push_back(event);
        else if (life.events.empty())
            ++life.eventsBefore;
    }
    void checkReturn()
    {
        const QString when = QStringLiteral("change %1 of this life, %2: ").arg(life.kept).arg(current->text);
        const QStringList notSynced = state.promise.missingOf(*current, state.synced.image().files);
        if (notSynced.isEmpty())
            return;
        const QStringList notWritten = state.promise.missingOf(*current, state.written().image().files);
        if (notWritten.isEmpty())
            lose(when + QStringLiteral("the module returned without a sync after this: "),
                 {state.unsynced.back().text()});
        else
            lose(when, notWritten);
    }

    LifeState state;
    RecordedLife life;
    std::shared_ptr<const Write> current;
};

QString differenceText(const MemoryArea& area, std::size_t byte, const MemoryArea& expected,
                       const Block* block)
{
    const int address = static_cast<int>(byte) / (area.isBits() ? 1 : 2);
    return QStringLiteral("%1 %2 is %3 after the start and must be %4, %5")
        .arg(area.name())
        .arg(address)
        .arg(*area.cell(address))
        .arg(*expected.cell(address))
        .arg(block ? QStringLiteral("as its file says") : QStringLiteral("as before: it is not retained"));
}

} // namespace

QString Event::text() const
{
    switch (kind) {
    case Kind::Op:
        return op.text();
    case Kind::Sync:
        return QStringLiteral("sync");
    case Kind::Begin:
        return write->text + (write->values.size() == 1
                                  ? QStringLiteral(" becomes %1").arg(write->values.front())
                                  : QStringLiteral(" begins"));
    case Kind::End:
        break;
    }
    return write->text + QStringLiteral(" returns");
}

LifeState::LifeState(const RetainedCells& cells, const DiskImage& found, Disk disk)
    : synced(std::move(disk)), promise(cells), cells(&cells)
{
    promise.restart(found.files);
    for (std::size_t area = 0; area < 3; ++area) {
        const QString name = QLatin1String(testAreas[area].fileName);
        const auto file = found.files.find(name);
        // A file that is too short for its whole area is emptied and filled with zeros.
        if (file != found.files.end() &&
            (!cells.wholeAreas || file->second.size() >= storedImage(area, found.files).size()))
            lengths[name] = file->second.size();
    }
}

void LifeState::apply(const Event& event)
{
    switch (event.kind) {
    case Event::Kind::Op:
        if (event.op.kind == DiskOp::Kind::SyncFile)
            settle([&](const DiskOp& op) { return op.isInFile() && op.file == event.op.file; });
        else if (event.op.kind == DiskOp::Kind::SyncNames)
            settle([](const DiskOp& op) { return !op.isInFile(); });
        else
            unsynced.push_back(event.op);
        break;
    case Event::Kind::Sync:
        settle([](const DiskOp&) { return true; });
        break;
    case Event::Kind::Begin:
        promise.begin(*event.write);
        break;
    case Event::Kind::End:
        promise.end();
        for (const auto& [name, bytes] : synced.image().files)
            if (name.endsWith(QLatin1String(".dat")))
                lengths[name] = bytes.size();
    }
}

Disk LifeState::written() const
{
    Disk disk = synced;
    for (const DiskOp& op : unsynced)
        disk.apply(op);
    return disk;
}

QStringList LifeState::shortened(const Files& files) const
{
    QStringList lines;
    for (const auto& [name, length] : lengths) {
        const auto found = files.find(name);
        if (found == files.end())
            lines.append(QStringLiteral("%1 is gone").arg(name));
        else if (found->second.size() < length)
            lines.append(QStringLiteral("%1 is %2 bytes long, it had %3")
                             .arg(name)
                             .arg(found->second.size())
                             .arg(length));
    }
    return lines;
}

JudgedBytes LifeState::judged(const DiskImage& image) const
{
    JudgedBytes judged;
    for (const QString& name : image.stale) {
        const auto file = synced.names.find(name);
        judged[name] = file == synced.names.end() ? 0 : synced.files.at(file->second).length;
    }
    return judged;
}

void LifeState::settle(const std::function<bool(const DiskOp&)>& isDurable)
{
    const auto rest = std::stable_partition(unsynced.begin(), unsynced.end(), isDurable);
    std::for_each(unsynced.begin(), rest, [&](const DiskOp& op) { synced.apply(op); });
    unsynced.erase(unsynced.begin(), rest);
    synced.forgetNameless(unsynced);
}

QStringList startPanel(Panel& panel, const RetainedCells& cells, const Files& found, RandomSource& random)
{
    fillAtRandom(panel.areas, random);
    MemoryAreas expected = panel.areas;
    const Files must = filesAfterStart(found, cells, expected);
    panel.open();
    // The runtime may ask for the watch list as soon as the module is open.
    const bool asksEarly = random.oneIn(2);
    if (asksEarly)
        panel.watch();
    panel.init();
    if (!asksEarly)
        panel.watch();
    QStringList lines;
    for (std::size_t i = 0; i < 3; ++i) {
        const MemoryArea& area = panel.areas.all()[i];
        const auto& memory = area.memory();
        const auto& mustHave = expected.all()[i].memory();
        if (memory == mustHave)
            continue;
        for (std::size_t byte = 0, left = mostLines; byte < memory.size() && left > 0; ++byte) {
            if (memory[byte] == mustHave[byte])
                continue;
            const int address = static_cast<int>(byte) / (area.isBits() ? 1 : 2);
            const Block whole = {};
            lines.append(differenceText(area, byte, expected.all()[i],
                                        cells.wholeAreas ? &whole : cells.blockOf(i, address)));
            --left;
        }
    }
    const Files left = readProjectDirectory().files;
    for (const auto& [name, bytes] : must)
        if (left.count(name) == 0 || left.at(name) != bytes)
            lines.append(QStringLiteral("%1 is not what the start must leave").arg(name));
    if (left.size() > must.size())
        lines.append(QStringLiteral("the start left a file of its own"));
    return lines;
}

RecordedLife recordLife(const ModuleLibrary& library, object* project, const RetainedCells& cells,
                        const DiskImage& found, const LifePlan& plan, RandomSource& random)
{
    writeProjectDirectory(found);
    std::optional<LifeRecorder> life;
    std::optional<Recorder> recorder;
    recorder.emplace([&](const DiskOp& op) { life->op(op); });
    life.emplace(cells, found, recorder->initialDisk());
    life->inWindow = plan.windowBegin == 0;
    DiskImage working;
    {
        Panel panel(library, project);
        Load load(panel, cells, random, *life);
        life->lose(QStringLiteral("first start: "), startPanel(panel, cells, found.files, random));
        int windowSteps = plan.windowSteps;
        // A load that keeps nothing must end as well.
        const int mostSteps = std::max(plan.steps, 2 * plan.changes);
        for (int i = 0; i < mostSteps && (i < plan.steps || life->soFar().kept < plan.changes); ++i) {
            if (plan.windowBegin > 0 && life->soFar().kept >= plan.windowBegin) {
                if (windowSteps == plan.windowSteps)
                    life->beginWindow();
                life->inWindow = windowSteps-- > 0;
            }
            load.step();
            if (!life->soFar().lost.isEmpty())
                break;
        }
        life->checkAll();
        recorder.reset();
        working = readProjectDirectory();
    }
    return life->finish(working, readProjectDirectory());
}
