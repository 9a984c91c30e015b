// Tests the way from the project's entries to the module's blocks, as shown by the watched cells.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/poweroff_protect.h"
#include "tests/support/module_test.h"
#include "tests/support/scripted_comm.h"
#include "tests/support/storage.h"

#include <algorithm>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RetentionEntries : public ModuleTest
{
protected:
    RetentionEntries() : project(perAddressProject({})) {}

    object& retention() { return *project->findChild(QStringLiteral("DataRetention")); }

    void setEntries(const std::vector<Entry>& entries)
    {
        retention().children.clear();
        for (const Entry& entry : entries)
            addEntry(retention(), entry);
    }

    object& sourceOf(std::size_t entry)
    {
        return *retention().children[entry]->findChild(QStringLiteral("sourceAddress"));
    }

    /// What is watched after the module has opened the project.
    std::vector<std::string> openedCells()
    {
        poweroff_protect model;
        model.extModelOpen(project.get(), QString(), &comm);
        return watchedCells(model);
    }

    std::unique_ptr<object> project;
    ScriptedComm comm;
};

TEST_F(RetentionEntries, AreReadPropertyByPropertyWithTheirDefaults)
{
    setEntries({{LW, 5, 2}});
    poweroff_protect model;
    model.extModelOpen(project.get(), QString(), &comm);
    const QStringList ofOpening = calls;
    const QStringList ofEntries = {QStringLiteral("object_get_child DataRetention"),
                                   QStringLiteral("object_first_child"),
                                   QStringLiteral("object_get_child sourceAddress"),
                                   QStringLiteral("int32 addressLength of=Entry default=0"),
                                   QStringLiteral("string addressType of=Entry default=null"),
                                   QStringLiteral("string Link of=sourceAddress default=null"),
                                   QStringLiteral("string Block of=sourceAddress default=null"),
                                   QStringLiteral("string No of=sourceAddress default=null"),
                                   QStringLiteral("int32 index of=sourceAddress default=0"),
                                   QStringLiteral("int32 station of=sourceAddress default=0"),
                                   QStringLiteral("int32 length of=sourceAddress default=0"),
                                   QStringLiteral("int32 Bit_or_Word of=sourceAddress default=0")};
    calls.clear();
    model.initAddrInfo();
    EXPECT_EQ(lines(calls), lines(ofEntries));
    EXPECT_EQ(lines(ofOpening.mid(ofOpening.size() - ofEntries.size())), lines(ofEntries))
        << "opening ends with the same reading";
}

TEST_F(RetentionEntries, GoToTheirOwnAreasWhateverTheirOrder)
{
    setEntries({{LW, 2, 4}, {RWI, 8, 1}, {LB, 0, 4}, {LB, 3, 1}, {RWI, 2, 1}, {LW, 0, 4}});
    EXPECT_THAT(openedCells(),
                ElementsAre("LB 0", "LB 1", "LB 2", "LW 0", "LW 1", "LW 2", "LW 3", "LW 4", "RWI 2", "RWI 8"))
        << "and are folded there alone";
}

TEST_F(RetentionEntries, WithoutAPropertyHaveItsDefault)
{
    setEntries({{LW, 9, 3}, {LW, 9, 3}, {LW, 9, 3}, {LW, 4, 3}});
    retention().children[0]->children.clear(); // no address, and so no area
    sourceOf(1).properties.erase(sourceOf(1).properties.begin() + 1);
    sourceOf(2).properties.pop_back();
    retention().children[3]->properties.clear();
    EXPECT_THAT(openedCells(), ElementsAre("LW 0", "LW 1", "LW 2")) << "without an index; the last is empty";
}

TEST_F(RetentionEntries, MayHaveAnyNameAndOtherNumbers)
{
    for (const char* name : {"Entry", "", "sourceAddress", "something"}) {
        object& entry = retention().addChild(QString::fromLatin1(name));
        entry.setNumber(QStringLiteral("addressLength"), 1)
            .setText(QStringLiteral("addressType"), QStringLiteral("Double Word"));
        entry.addChild(QStringLiteral("sourceAddress"))
            .setText(QStringLiteral("Block"), LW)
            .setNumber(QStringLiteral("index"), 2 * qint64(retention().children.size()))
            .setNumber(QStringLiteral("length"), 50)
            .setNumber(QStringLiteral("Bit_or_Word"), 2)
            .setNumber(QStringLiteral("station"), 60);
    }
    EXPECT_THAT(openedCells(), ElementsAre("LW 2", "LW 4", "LW 6", "LW 8"));
}

TEST_F(RetentionEntries, HandTheirLinkToTheHostNullAndEmptyKeptApart)
{
    writeRetentionFile(wordFileName, QByteArray(6, '\x11'));
    setEntries({{LW, 0, 1}, {LW, 10, 1}, {LW, 20, 1}});
    sourceOf(0).setText(QStringLiteral("Link"), QStringLiteral("PLC 1"));
    sourceOf(1).setText(QStringLiteral("Link"), QStringLiteral(""));
    sourceOf(2).properties.erase(sourceOf(2).properties.begin()); // "Link" was the first
    poweroff_protect model;
    model.extModelOpen(project.get(), QString(), &comm);
    model.extModelInit();
    ASSERT_EQ(comm.calls.size(), 3U);
    EXPECT_TRUE(comm.calls[0].link == QStringLiteral("PLC 1"));
    EXPECT_TRUE(comm.calls[1].link.isEmpty() && !comm.calls[1].link.isNull()) << "empty is not null";
    EXPECT_TRUE(comm.calls[2].link.isNull()) << "a missing text is a null string";
}

TEST_F(RetentionEntries, ReadAgainReplaceTheEarlierBlocks)
{
    setEntries({{LW, 5, 2}, {LB, 1, 1}});
    poweroff_protect model;
    model.extModelOpen(project.get(), QString(), &comm);
    model.initAddrInfo();
    EXPECT_THAT(watchedCells(model), ElementsAre("LB 1", "LW 5", "LW 6")) << "the same again, not twice";
    setEntries({{RWI, 3, 1}});
    model.initAddrInfo();
    EXPECT_THAT(watchedCells(model), ElementsAre("RWI 3"));
    project->children.clear();
    model.initAddrInfo();
    EXPECT_THAT(watchedCells(model), IsEmpty()) << "without the container there are none";
}

TEST_F(RetentionEntries, MayBeMany)
{
    std::vector<Entry> entries;
    for (int i = 19999; i >= 0; --i)
        entries.push_back({i % 2 ? LW : LB, 3 * i, 1});
    setEntries(entries);
    const std::vector<std::string> cells = openedCells();
    ASSERT_EQ(cells.size(), 20000U);
    EXPECT_EQ(cells.front(), "LB 0");
    EXPECT_EQ(cells[9999], "LB 59994");
    EXPECT_EQ(cells[10000], "LW 3");
    EXPECT_EQ(cells.back(), "LW 59997");
}

} // namespace
