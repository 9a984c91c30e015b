// Runs the scripted life.
// SPDX-License-Identifier: MIT
#include "tests/faults/life.h"

#include "simulated_host/remove_directory.h"
#include "tests/support/storage.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <initializer_list>

#include <unistd.h>

// The second bit block begins in the middle of a byte that both share.
const std::vector<LifeBlock> lifeBlocks = {{0, 20, 12, 0},  {0, 40, 9, 12}, {1, 100, 10, 0},
                                           {1, 200, 5, 20}, {2, 0, 4, 0},   {2, 300, 6, 8}};

const std::vector<Change> lifeChanges = {{0, 25, 1},     {1, 103, 1111}, {2, 2, 7},     {0, 45, 1},
                                         {1, 204, 2222}, {2, 305, 8},    {1, 100, 333}, {0, 25, 0},
                                         {2, 0, 65535},  {1, 203, 4},    {0, 31, 1},    {2, 300, 9}};

namespace {

/// Length of an area's file in that mode.
int fileLength(Mode mode, std::size_t area)
{
    if (mode == Mode::WholeAreas)
        return testAreas[area].imageBytes;
    return std::array<int, 3>{21 / 8 + 1, 2 * 15, 2 * 10}[area];
}

std::unique_ptr<object> projectFor(Mode mode)
{
    if (mode == Mode::WholeAreas)
        return wholeAreaProject(1, 5);
    std::vector<Entry> entries;
    for (const LifeBlock& block : lifeBlocks)
        entries.push_back({QString::fromLatin1(testAreas[block.area].name), block.first, block.count});
    return perAddressProject(entries);
}

void setMemory(MemoryAreas& areas, const TestArea& area, const QByteArray& image)
{
    std::copy(image.begin(), image.end(), areas.named(QString::fromLatin1(area.name))->memory().begin());
}

Images memoriesOf(MemoryAreas& areas)
{
    Images images;
    for (std::size_t a = 0; a < images.size(); ++a) {
        const auto& memory = areas.named(QString::fromLatin1(testAreas[a].name))->memory();
        images[a] = QByteArray(reinterpret_cast<const char*>(memory.data()), static_cast<int>(memory.size()));
    }
    return images;
}

/// The n-th event of a life, from 0.
void runEvent(Mode mode, MemoryAreas& areas, ExtendFuncModelBase& model, int event, const StepRunner& run)
{
    if (mode == Mode::WholeAreas) {
        for (const TestArea& area : testAreas)
            setMemory(areas, area, imageForCycle(area, event + 1));
        run(FirstEvent + event, [&] { model.cyclicRun(); });
        return;
    }
    const Change& change = lifeChanges[static_cast<std::size_t>(event)];
    const QString area = QString::fromLatin1(testAreas[change.area].name);
    areas.named(area)->setCell(change.address, change.value);
    const _ExtendTriggerMsg_t message = changeMessage(area, change.address);
    run(FirstEvent + event, [&] { model.addrOptChangeMsg(&message); });
}

/// Counts what the module restores. Allocates nothing, like everything that the module calls here.
class CountingComm : public SimulatedComm
{
public:
    using SimulatedComm::SimulatedComm;

    int writeRegisterValues(const QString& link, const QString& area, int address, int selector, int count,
                            const ushort* data) override
    {
        for (std::size_t a = 0; a < testAreas.size(); ++a)
            areaWrites[a] += area == QLatin1String(testAreas[a].name);
        return SimulatedComm::writeRegisterValues(link, area, address, selector, count, data);
    }
};

int syncsRun = 0;

} // namespace

std::array<int, 3> areaWrites = {};
std::function<int()> syncCommand;

// Replaces the simulated host's function, which allocates memory for its records.
int sys_base_do_system(const char* command)
{
    if (qstrcmp(command, "sync") != 0)
        return 0;
    ++syncsRun;
    return syncCommand ? syncCommand() : 0;
}

int eventsOf(Mode mode)
{
    return mode == Mode::WholeAreas ? lifeCycles : static_cast<int>(lifeChanges.size());
}

testing::AssertionResult isReached(int faults, int known)
{
    if (QT_VERSION >= 0x050000 && QT_VERSION < 0x060000 ? faults == known : 2 * faults > known)
        return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << faults << " faults were reached, not " << known
           << ": the module, QtCore or the C++ library makes other calls or allocations than before. If that "
              "is meant, expect this number and correct the sum in docs/reliability.md";
}

LifeRecord live(Mode mode, const StepRunner& run)
{
    const ModuleLibrary& library = moduleLibrary();
    EXPECT_TRUE(library.isLoaded()) << library.error().toStdString();
    const auto project = projectFor(mode);
    MemoryAreas areas;
    for (const TestArea& area : testAreas)
        setMemory(areas, area, imageAtStart(area));
    CountingComm comm(areas);
    areaWrites = {};
    LifeRecord record;
    const int syncsBefore = syncsRun;

    ModelPointer model;
    run(Create, [&] { model = library.createModel(); });
    if (!model) {
        record.restored = memoriesOf(areas);
        return record;
    }
    run(Open, [&] { model->extModelOpen(project.get(), QString(), &comm); });
    run(Init, [&] { model->extModelInit(); });
    QList<RegisterValueChangeSize> watched;
    run(Watch, [&] { model->getMonitorTriggerAddr(watched); });
    record.watched.assign(watched.begin(), watched.end());
    record.restored = memoriesOf(areas);
    for (int event = 0; event < eventsOf(mode); ++event)
        runEvent(mode, areas, *model, event, run);
    run(FirstEvent + eventsOf(mode), [&] { model.reset(); });
    record.syncs = syncsRun - syncsBefore;
    return record;
}

QByteArray imageAtStart(const TestArea& area)
{
    static const QByteArray words = pattern(131072, 77);
    static const QByteArray bits = [] {
        QByteArray image = pattern(65536, 77);
        for (char& cell : image)
            cell = static_cast<char>(cell & 1);
        return image;
    }();
    return area.bits ? bits : words;
}

QByteArray imageForCycle(const TestArea& area, int cycle)
{
    static const QByteArray images[lifeCycles] = {pattern(131072, 101), pattern(131072, 102),
                                                  pattern(131072, 103)};
    return images[cycle - 1].left(area.imageBytes);
}

Files filesAtStart(Mode mode, StartFiles kind)
{
    static const QByteArray bytes = pattern(131072, 30);
    Files files;
    for (std::size_t a = 0; a < files.size(); ++a) {
        const QByteArray full = bytes.left(fileLength(mode, a));
        auto& file = files[a];
        if (kind == StartFiles::Kept)
            file = full;
        else if (kind == StartFiles::Shorter)
            file = full.left(full.size() / 2);
        else if (kind == StartFiles::Empty)
            file = QByteArray("");
    }
    return files;
}

void lay(const Files& files, bool withDirectory)
{
    removeDirectory(QStringLiteral("/usr/tavrin"));
    if (withDirectory && QDir().mkpath(QLatin1String(fixedProjectDirectory)))
        layFiles(files);
}

char currentLife[200];

extern "C" {

static void tellLife(int signal)
{
    const char intro[] = "\nwhile: ";
    (void)!write(STDERR_FILENO, intro, sizeof intro - 1);
    (void)!write(STDERR_FILENO, currentLife, strnlen(currentLife, sizeof currentLife));
    (void)!write(STDERR_FILENO, "\n", 1);
    std::signal(signal, SIG_DFL);
    raise(signal);
}

} // extern "C"

void tellLifeOnCrash()
{
    for (const int signal : {SIGSEGV, SIGABRT, SIGALRM})
        std::signal(signal, tellLife);
}
