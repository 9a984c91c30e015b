// Recording of a life.
// SPDX-License-Identifier: MIT
#include "tests/power_cut/disk_states/recorded_life.h"

#include "tests/power_cut/disk_states/recorder.h"

namespace {

class EventLog : public LoadLog
{
public:
    explicit EventLog(std::vector<Event>& events) : events(events) {}

    void give(const Change& change) override { events.push_back({Event::Kind::Give, {}, change}); }
    void keep(const Change& change) override { events.push_back({Event::Kind::Keep, {}, change}); }
    void beginSave(const MemoryAreas& areas) override
    {
        events.push_back({Event::Kind::BeginSave, {}, {}, std::make_shared<const Images>(imagesOf(areas))});
    }
    void completeSave() override { events.push_back({Event::Kind::CompleteSave}); }
    void sync() override { events.push_back({Event::Kind::Sync}); }

private:
    std::vector<Event>& events;
};

/// The last events are those of an open panel: what its streams still hold must not reach the files before
/// the comparison.
QString differenceToDirectory(const RecordedLife& life)
{
    Disk disk = life.start;
    for (const Event& event : life.events)
        if (event.kind == Event::Kind::Op)
            disk.apply(event.op);
    const DiskImage recorded = disk.image();
    const DiskImage found = readProjectDirectory();
    if (recorded.directory == found.directory && recorded.files == found.files)
        return {};
    return QStringLiteral("the record is incomplete: the module changed files in a way that is not recorded");
}

} // namespace

QString Event::text() const
{
    const auto cell = [this] {
        return QStringLiteral("%1 %2 = %3")
            .arg(QLatin1String(areaNames[change.cell.area]))
            .arg(change.cell.address)
            .arg(change.value);
    };
    switch (kind) {
    case Kind::Op:
        return op.text();
    case Kind::Sync:
        return QStringLiteral("sync");
    case Kind::Give:
        return QStringLiteral("the panel gives %1").arg(cell());
    case Kind::Keep:
        return QStringLiteral("the report of %1 is synced or has returned").arg(cell());
    case Kind::BeginSave:
        return QStringLiteral("a save begins");
    case Kind::CompleteSave:
        break;
    }
    return QStringLiteral("the save is synced or has returned");
}

RecordedLife recordLife(const ModuleLibrary& library, const PanelProject& project, const DiskImage& found,
                        int steps, Random& random)
{
    writeProjectDirectory(found);
    RecordedLife life;
    EventLog log(life.events);
    std::optional<Recorder> recorder;
    recorder.emplace([&](const DiskOp& op) { life.events.push_back({Event::Kind::Op, op}); });
    life.start = recorder->initialDisk();

    Panel panel(library, project.root.get());
    Load load(panel, project, random, log);
    panel.start();
    life.restored = panel.areas;
    for (int i = 0; i < steps; ++i)
        load.step();
    recorder.reset();
    life.error = differenceToDirectory(life);
    return life;
}
