// Runs every short sequence of events on two small areas, in both modes, and compares files and areas with
// the model of the rules after each event.
// SPDX-License-Identifier: MIT
#include "tests/support/checked_life.h"
#include "tests/support/module_test.h"

#include <iostream>
#include <iterator>
#include <malloc.h>

namespace {

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
    const char* name;
    const char* area = nullptr;
    int address = 0;
};

/// The next cell also changes, but is not reported.
const Event events[] = {{Kind::Change, "change LB 4", "LB", 4},
                        {Kind::Change, "change LB 12", "LB", 12},
                        {Kind::Change, "change LW 11", "LW", 11},
                        {Kind::Change, "change LW 14", "LW", 14},
                        {Kind::Save, "save"},
                        {Kind::Cut, "cut"},
                        {Kind::Restart, "restart"},
                        {Kind::OtherProject, "other project"}};

/// A few cells; the same areas with others, and more of them; whole areas.
std::vector<std::unique_ptr<object>> makeProjects()
{
    std::vector<std::unique_ptr<object>> projects;
    projects.push_back(perAddressProject({{"LB", 3, 3}, {"LW", 10, 2}, {"LW", 14, 1}}));
    projects.push_back(perAddressProject({{"LB", 12, 1}, {"LB", 0, 9}, {"LW", 11, 4}, {"LW", 9, 1}}));
    projects.push_back(wholeAreaProject(1, 5));
    return projects;
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
    /// Runs every sequence of `length` events, which also covers all shorter ones.
    void liveAll(int length)
    {
        setCallLog(nullptr);
        mallopt(M_TRIM_THRESHOLD,
                64 << 20); // so that the areas of each start reuse the memory of the last one
        mallopt(M_MMAP_THRESHOLD, 1 << 20);
        setCommandRunner([this](const char* command) {
            if (command == QByteArray("sync"))
                synced = filesNow();
            return 0;
        });
        std::vector<std::size_t> choice(static_cast<std::size_t>(length), 0);
        int lived = 0;
        for (std::size_t at = 0; at < choice.size(); ++lived) {
            ASSERT_NO_FATAL_FAILURE(live(choice));
            for (at = 0; at < choice.size() && ++choice[at] == std::size(events); ++at)
                choice[at] = 0;
        }
        std::cout << lived << " sequences of " << length << " events\n";
    }

private:
    void live(const std::vector<std::size_t>& choice)
    {
        current = GetParam().project;
        starts = 0;
        situation = std::string("\nbeginning with ") + GetParam().name;
        synced = mustBeSynced = Files();
        life.reset();
        ASSERT_NO_FATAL_FAILURE(start(Files()));
        for (const std::size_t at : choice) {
            situation += std::string(", ") + events[at].name;
            ASSERT_NO_FATAL_FAILURE(happen(events[at]));
        }
        ASSERT_EQ(life->cellDifference(), "") << situation;
    }

    void happen(const Event& event)
    {
        if (event.kind >= Kind::Cut) {
            ASSERT_EQ(life->cellDifference(), "") << situation;
            life->end();
            if (event.kind == Kind::Cut) // what was not synced is lost
                return start(mustBeSynced, &synced);
            ASSERT_EQ(life->difference(), "") << situation;
            if (event.kind == Kind::OtherProject)
                current = (current + 1) % projects.size();
            return start(life->files());
        }
        if (event.kind == Kind::Change) {
            const QString area = QLatin1String(event.area);
            const MemoryArea& cells = *life->areas.named(area);
            for (const int address : {event.address, event.address + 1})
                life->setCell(area, address,
                              static_cast<ushort>(cells.isBits() ? !*cells.cell(address)
                                                                 : *cells.cell(address) + 0x0101));
            life->report(changeMessage(area, event.address));
        } else {
            life->save();
        }
        expectSyncsAndFiles();
    }

    /// Starts a new module, in a panel whose cells are not zero at every start, on files that must be
    /// `files`. After a cut, the files are first restored to `synced`.
    void start(const Files& files, const Files* left = nullptr)
    {
        ++starts;
        MemoryAreas cells;
        for (MemoryArea& area : cells.all())
            std::fill(area.memory().begin(), area.memory().end(), area.isBits() ? 1 : 0x40 + starts);
        auto module = moduleLibrary().createModel(); // which makes the directory
        layFiles(left ? *left : files);
        life = std::make_unique<CheckedLife>(std::move(module), *projects[current], cells, files);
        life->init();
        syncsSeen = 0;
        expectSyncsAndFiles();
    }

    void expectSyncsAndFiles()
    {
        ASSERT_EQ(life->difference(), "") << situation;
        if (life->account.syncs() > syncsSeen)
            mustBeSynced = life->files();
        syncsSeen = life->account.syncs();
    }

    const std::vector<std::unique_ptr<object>> projects = makeProjects();
    std::size_t current = 0; ///< which project
    int starts = 0;
    int syncsSeen = 0;  ///< since this start
    Files synced;       ///< what a cut leaves
    Files mustBeSynced; ///< what it must leave
    std::string situation;
    std::unique_ptr<CheckedLife> life;
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
