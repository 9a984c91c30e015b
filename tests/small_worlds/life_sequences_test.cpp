// Lives every short sequence of events on two small areas, in both modes, and compares files and areas with
// the account of the rules after each event. SPDX-License-Identifier: MIT
#include "tests/support/kept_files_model.h"
#include "tests/support/module_test.h"
#include "tests/support/storage.h"

#include <iostream>
#include <iterator>
#include <sstream>

namespace {

using Files = std::array<std::optional<QByteArray>, 3>;

const std::array<const char*, 3> fileNames = {bitFileName, wordFileName, rwiFileName};

enum class Kind
{
    Change,
    Save,
    Cut,
    Restart,
    OtherProject
};

struct Event
{
    Kind kind;
    const char* area = nullptr;
    int address = 0;
};

/// The other cell of a pair, which changes too but is not reported, is the next one.
const Event events[] = {{Kind::Change, "LB", 4},
                        {Kind::Change, "LB", 12},
                        {Kind::Change, "LW", 11},
                        {Kind::Change, "LW", 14},
                        {Kind::Save},
                        {Kind::Cut},
                        {Kind::Restart},
                        {Kind::OtherProject}};

std::string nameOf(const Event& event)
{
    switch (event.kind) {
    case Kind::Change:
        return std::string("change ") + event.area + ' ' + std::to_string(event.address);
    case Kind::Save:
        return "save";
    case Kind::Cut:
        return "cut";
    case Kind::Restart:
        return "restart";
    default:
        return "other project";
    }
}

/// A few cells; the same areas with others, and more of them; whole areas.
std::vector<std::unique_ptr<object>> makeProjects()
{
    std::vector<std::unique_ptr<object>> projects;
    projects.push_back(perAddressProject({{"LB", 3, 3}, {"LW", 10, 2}, {"LW", 14, 1}}));
    projects.push_back(perAddressProject({{"LB", 12, 1}, {"LB", 0, 9}, {"LW", 11, 4}, {"LW", 9, 1}}));
    projects.push_back(wholeAreaProject(1, 5));
    return projects;
}

Files filesNow()
{
    Files files;
    for (std::size_t a = 0; a < files.size(); ++a)
        files[a] = retentionFile(QLatin1String(fileNames[a]));
    return files;
}

void layFiles(const Files& files)
{
    for (std::size_t a = 0; a < files.size(); ++a) {
        const QString name = QLatin1String(fileNames[a]);
        if (files[a])
            writeRetentionFile(name, *files[a]);
        else
            QFile::remove(retentionPath(name));
    }
}

struct Beginning
{
    const char* name;
    std::size_t project; ///< the first one
    int events;
};

void PrintTo(const Beginning& beginning, std::ostream* out)
{
    *out << beginning.name;
}

class EverySequence : public ModuleTest, public testing::WithParamInterface<Beginning>
{
protected:
    /// Lives every sequence of `length` events; as each begins with all shorter ones, these are lived with
    /// it.
    void liveAll(int length)
    {
        std::vector<std::size_t> choice(static_cast<std::size_t>(length), 0);
        int lived = 0;
        for (;;) {
            sequence.clear();
            for (const std::size_t at : choice)
                sequence.push_back(events[at]);
            ASSERT_NO_FATAL_FAILURE(live());
            ++lived;
            std::size_t at = 0;
            while (at < choice.size() && ++choice[at] == std::size(events))
                choice[at++] = 0;
            if (at == choice.size())
                break;
        }
        std::cout << lived << " sequences of " << length << " events\n";
    }

private:
    void live()
    {
        current = GetParam().project;
        starts = 0;
        step = 0;
        synced = modelSynced = Files();
        layFiles(synced);
        setCommandRunner([this](const char* command) {
            if (command == QByteArray("sync"))
                synced = filesNow();
            return 0;
        });
        ASSERT_NO_FATAL_FAILURE(start(Files()));
        for (; step < sequence.size(); ++step)
            ASSERT_NO_FATAL_FAILURE(happen(sequence[step]));
        ASSERT_NO_FATAL_FAILURE(expectAreas());
        module.reset();
        setCommandRunner({});
    }

    void happen(const Event& event)
    {
        switch (event.kind) {
        case Kind::Change:
            for (MemoryAreas* const all : {&areas, &expectedAreas})
                for (const int address : {event.address, event.address + 1}) {
                    MemoryArea& area = *all->named(QLatin1String(event.area));
                    area.setCell(address, static_cast<ushort>(area.isBits() ? !*area.cell(address)
                                                                            : *area.cell(address) + 0x0101));
                }
            report(event);
            break;
        case Kind::Save:
            module->cyclicRun();
            model->cyclicRun();
            break;
        case Kind::Cut: // what was not synced is lost
            ASSERT_NO_FATAL_FAILURE(expectAreas());
            module.reset();
            layFiles(synced);
            ASSERT_NO_FATAL_FAILURE(start(modelSynced));
            return;
        case Kind::OtherProject:
            current = (current + 1) % projects.size();
            [[fallthrough]];
        case Kind::Restart:
            ASSERT_NO_FATAL_FAILURE(expectAreas());
            module.reset();
            ASSERT_NO_FATAL_FAILURE(expectFiles());
            ASSERT_NO_FATAL_FAILURE(start({model->file(0), model->file(1), model->file(2)}));
            return;
        }
        ASSERT_NO_FATAL_FAILURE(expectSyncsAndFiles());
    }

    void report(const Event& event)
    {
        const _ExtendTriggerMsg_t message = changeMessage(QLatin1String(event.area), event.address);
        module->addrOptChangeMsg(&message);
        model->change(QByteArray(event.area) + '\0', event.address);
    }

    /// A new module, in a panel whose cells hold other values than zero at every start, on files that are
    /// expected to be `files`.
    void start(const Files& files)
    {
        ++starts;
        module = moduleLibrary().createModel();
        for (MemoryAreas* const all : {&areas, &expectedAreas})
            for (MemoryArea& area : all->all())
                std::fill(area.memory().begin(), area.memory().end(), area.isBits() ? 1 : 0x40 + starts);
        model = std::make_unique<KeptFilesModel>(expectedOf(*projects[current]), expectedAreas, files);
        syncsBefore = commandsRun(QStringLiteral("sync"));
        syncsSeen = 0;
        module->extModelOpen(projects[current].get(), QString(), &comm);
        model->open();
        module->extModelInit();
        model->init();
        ASSERT_NO_FATAL_FAILURE(expectSyncsAndFiles());
    }

    void expectSyncsAndFiles()
    {
        ASSERT_EQ(commandsRun(QStringLiteral("sync")) - syncsBefore, model->syncs()) << situation();
        if (model->syncs() > syncsSeen)
            modelSynced = {model->file(0), model->file(1), model->file(2)};
        syncsSeen = model->syncs();
        ASSERT_NO_FATAL_FAILURE(expectFiles());
    }

    /// Called before each start, which fills the areas again, and at the end.
    void expectAreas()
    {
        for (std::size_t a = 0; a < 3; ++a)
            ASSERT_TRUE(areas.all()[a].memory() == expectedAreas.all()[a].memory())
                << areaNames[a] << firstDifference(a) << situation();
    }

    void expectFiles()
    {
        const Files files = filesNow();
        for (std::size_t a = 0; a < 3; ++a)
            ASSERT_TRUE(files[a] == model->file(a)) << fileNames[a] << " holds " << beginning(files[a])
                                                    << ", not " << beginning(model->file(a)) << situation();
    }

    static std::string beginning(const std::optional<QByteArray>& bytes)
    {
        return bytes ? std::to_string(bytes->size()) + " bytes, " + hex(bytes->left(40)) : hex(bytes);
    }

    std::string firstDifference(std::size_t a) const
    {
        for (int address = 0; address < MemoryArea::cellCount; ++address) {
            const int got = *areas.all()[a].cell(address);
            const int wanted = *expectedAreas.all()[a].cell(address);
            if (got != wanted)
                return ' ' + std::to_string(address) + " is " + std::to_string(got) + ", not " +
                       std::to_string(wanted);
        }
        return {};
    }

    std::string situation() const
    {
        std::ostringstream text;
        text << "\nbeginning with " << GetParam().name;
        for (std::size_t k = 0; k < sequence.size() && k <= step; ++k)
            text << ", " << nameOf(sequence[k]);
        return text.str();
    }

    const std::vector<std::unique_ptr<object>> projects = makeProjects();
    std::vector<Event> sequence;
    std::size_t step = 0;
    std::size_t current = 0; ///< which project
    int starts = 0;
    int syncsBefore = 0; ///< this start
    int syncsSeen = 0;   ///< since this start
    Files synced;        ///< what a cut leaves
    Files modelSynced;   ///< what it must leave
    MemoryAreas areas;
    MemoryAreas expectedAreas;
    SimulatedComm comm{areas};
    ModelPointer module;
    std::unique_ptr<KeptFilesModel> model;
};

TEST_P(EverySequence, OfThreeEventsGoesAsTheRulesSay)
{
    liveAll(3);
}

TEST_P(EverySequence, OfMoreEventsGoesAsTheRulesSay)
{
    liveAll(GetParam().events);
}

INSTANTIATE_TEST_SUITE_P(Lives, EverySequence,
                         testing::Values(Beginning{"WithAFewCells", 0, 5}, Beginning{"WithMoreCells", 1, 4},
                                         Beginning{"WithWholeAreas", 2, 4}),
                         [](const auto& info) { return std::string(info.param.name); });

} // namespace
