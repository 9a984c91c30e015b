// The way from the project's entries to the module's blocks, seen through what is watched and kept.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/poweroff_protect.h"
#include "tests/support/module_test.h"
#include "tests/support/random_source.h"
#include "tests/support/scripted_comm.h"
#include "tests/support/storage.h"

#include <algorithm>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const QString LB = QStringLiteral("LB");
const QString LW = QStringLiteral("LW");
const QString RWI = QStringLiteral("RWI");

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

    /// "AREA ADDRESS" of every kept cell, block by block.
    static std::vector<std::string> keptCells(ExtendFuncModelBase& model)
    {
        QList<RegisterValueChangeSize> records;
        model.getMonitorTriggerAddr(records);
        std::vector<std::string> cells;
        for (const RegisterValueChangeSize& record : records)
            cells.push_back(std::string(record.areaName) + ' ' + std::to_string(record.address));
        return cells;
    }

    /// The same after the module has opened the project.
    std::vector<std::string> openedCells()
    {
        poweroff_protect model;
        model.extModelOpen(project.get(), QString(), &comm);
        return keptCells(model);
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

TEST_F(RetentionEntries, AreReadOneAfterTheOther)
{
    setEntries({{LW, 5, 2}, {QStringLiteral("none"), 1, 1}, {LB, 0, 9}});
    openedCells();
    EXPECT_EQ(calls.count(QStringLiteral("object_first_child")), 2)
        << "once for the mode, once for the entries";
    EXPECT_EQ(calls.count(QStringLiteral("object_get_child sourceAddress")), 3);
    EXPECT_EQ(callsTo({QStringLiteral("int32"), QStringLiteral("string")}).size(), 3 * 9);
}

TEST_F(RetentionEntries, AreSortedByIndexBeforeTheyBecomeBlocks)
{
    setEntries({{LW, 30, 1}, {LW, 10, 1}, {LW, 20, 1}});
    EXPECT_THAT(openedCells(), ElementsAre("LW 10", "LW 20", "LW 30"));
    setEntries({{LW, 3, 2}, {LW, -5, 2}, {LW, 0, 1}});
    EXPECT_THAT(openedCells(), ElementsAre("LW -5", "LW -4", "LW 0", "LW 3", "LW 4"));
}

TEST_F(RetentionEntries, GoToTheirOwnAreasWhateverTheirOrder)
{
    std::vector<Entry> entries = {{LB, 7, 1}, {LB, 3, 2}, {LW, 9, 1}, {LW, 1, 1}, {RWI, 8, 1}, {RWI, 2, 1}};
    RandomSource random(1);
    for (int round = 0; round < 50; ++round) {
        std::shuffle(entries.begin(), entries.end(), random.engine);
        setEntries(entries);
        EXPECT_THAT(openedCells(), ElementsAre("LB 3", "LB 4", "LB 7", "LW 1", "LW 9", "RWI 2", "RWI 8"));
    }
}

TEST_F(RetentionEntries, OfUnknownAreasAreDropped)
{
    setEntries({{QStringLiteral("lb"), 1, 1},
                {QStringLiteral("LB "), 2, 1},
                {QStringLiteral(" LB"), 3, 1},
                {QStringLiteral("Lw"), 4, 1},
                {QStringLiteral("RW"), 5, 1},
                {QStringLiteral("RWIX"), 6, 1},
                {QStringLiteral(""), 7, 1},
                {RWI, 8, 1}});
    EXPECT_THAT(openedCells(), ElementsAre("RWI 8"));
}

TEST_F(RetentionEntries, WithoutAnAddressAreDroppedAndTheNextIsRead)
{
    retention().addChild(QStringLiteral("Entry")).setNumber(QStringLiteral("addressLength"), 3);
    addEntry(retention(), {LW, 4, 1});
    EXPECT_THAT(openedCells(), ElementsAre("LW 4"));
}

TEST_F(RetentionEntries, WithoutABlockTextAreDropped)
{
    object& entry = retention().addChild(QStringLiteral("Entry"));
    entry.setNumber(QStringLiteral("addressLength"), 3);
    entry.addChild(QStringLiteral("sourceAddress")).setNumber(QStringLiteral("index"), 3);
    EXPECT_THAT(openedCells(), IsEmpty());
}

TEST_F(RetentionEntries, MayHaveAnyName)
{
    for (const char* name : {"Entry", "", "sourceAddress", "something"}) {
        object& entry = retention().addChild(QString::fromLatin1(name));
        entry.setNumber(QStringLiteral("addressLength"), 1);
        entry.addChild(QStringLiteral("sourceAddress"))
            .setText(QStringLiteral("Block"), LW)
            .setNumber(QStringLiteral("index"), 2 * qint64(retention().children.size()));
    }
    EXPECT_THAT(openedCells(), ElementsAre("LW 2", "LW 4", "LW 6", "LW 8"));
}

TEST_F(RetentionEntries, WithoutALengthAreBlocksWithoutCells)
{
    object& entry = retention().addChild(QStringLiteral("Entry"));
    entry.addChild(QStringLiteral("sourceAddress"))
        .setText(QStringLiteral("Block"), LW)
        .setNumber(QStringLiteral("index"), 4);
    EXPECT_THAT(openedCells(), IsEmpty());
    addEntry(retention(), {LW, 0, 6}); // the empty entry lies strictly inside it
    EXPECT_THAT(openedCells(), ElementsAre("LW 0", "LW 1", "LW 2", "LW 3", "LW 4", "LW 5"));
}

TEST_F(RetentionEntries, WithoutAnIndexBeginAtZero)
{
    object& entry = retention().addChild(QStringLiteral("Entry"));
    entry.setNumber(QStringLiteral("addressLength"), 2);
    entry.addChild(QStringLiteral("sourceAddress")).setText(QStringLiteral("Block"), LB);
    EXPECT_THAT(openedCells(), ElementsAre("LB 0", "LB 1"));
}

TEST_F(RetentionEntries, TheRangesLengthIsNotTheAddressesLength)
{
    setEntries({{LW, 4, 2}});
    object& source = *retention().children[0]->findChild(QStringLiteral("sourceAddress"));
    source.setNumber(QStringLiteral("length"), 50)
        .setNumber(QStringLiteral("Bit_or_Word"), 2)
        .setNumber(QStringLiteral("station"), 60);
    retention().children[0]->setText(QStringLiteral("addressType"), QStringLiteral("Double Word"));
    EXPECT_THAT(openedCells(), ElementsAre("LW 4", "LW 5"));
}

TEST_F(RetentionEntries, OverlappingOnesAreFoldedPerAreaOnly)
{
    setEntries({{LW, 2, 4}, {LB, 0, 4}, {LB, 3, 1}, {LW, 0, 4}, {RWI, 1, 2}});
    EXPECT_THAT(openedCells(), ElementsAre("LB 0", "LB 1", "LB 2", "LW 0", "LW 1", "LW 2", "LW 3", "LW 4",
                                           "RWI 1", "RWI 2"));
}

TEST_F(RetentionEntries, WithTheSameIndexBothCountInTheirBlock)
{
    setEntries({{LW, 5, 1}, {LW, 5, 3}, {RWI, 5, 3}, {RWI, 5, 1}});
    EXPECT_THAT(openedCells(), ElementsAre("LW 5", "LW 6", "LW 7", "RWI 5", "RWI 6", "RWI 7"));
}

TEST_F(RetentionEntries, HandTheirLinkToTheHostNullAndEmptyKeptApart)
{
    writeRetentionFile(wordFileName, QByteArray(6, '\x11'));
    setEntries({{LW, 0, 1}, {LW, 10, 1}, {LW, 20, 1}});
    const auto source = [&](std::size_t k) -> object& {
        return *retention().children[k]->findChild(QStringLiteral("sourceAddress"));
    };
    source(0).setText(QStringLiteral("Link"), QStringLiteral("PLC 1"));
    source(1).setText(QStringLiteral("Link"), QStringLiteral(""));
    source(2).properties.erase(source(2).properties.begin()); // "Link" was the first
    poweroff_protect model;
    model.extModelOpen(project.get(), QString(), &comm);
    model.extModelInit();
    ASSERT_EQ(comm.calls.size(), 3U);
    EXPECT_TRUE(comm.calls[0].link == QStringLiteral("PLC 1"));
    EXPECT_TRUE(comm.calls[1].link.isEmpty() && !comm.calls[1].link.isNull()) << "empty is not null";
    EXPECT_TRUE(comm.calls[2].link.isNull()) << "a missing text is a null string";
}

TEST_F(RetentionEntries, GetTheirPlacesInTheFilesInAddressOrder)
{
    setEntries({{RWI, 50, 1}, {LB, 9, 3}, {LW, 200, 5}, {RWI, 3, 2}, {LB, 2, 6}, {LW, 100, 10}});
    const auto panel = startPanel(project.get());
    const auto change = [&](const QString& area, int address, ushort value) {
        panel->areas.named(area)->setCell(address, value);
        panel->reportChange(area, address);
    };
    change(LW, 200, 0x0102);
    change(RWI, 50, 0x0304);
    change(LB, 9, 1);
    change(LB, 11, 1);
    EXPECT_EQ(hex(retentionFile(wordFileName)),
              hex(QByteArray(20, '\0') + QByteArray::fromHex("0201") + QByteArray(8, '\0')));
    EXPECT_EQ(hex(retentionFile(rwiFileName)), "00 00 00 00 04 03");
    EXPECT_EQ(hex(retentionFile(bitFileName)), "40 01");
}

TEST_F(RetentionEntries, ReadAgainReplaceTheEarlierBlocks)
{
    setEntries({{LW, 5, 2}, {LB, 1, 1}});
    poweroff_protect model;
    model.extModelOpen(project.get(), QString(), &comm);
    model.initAddrInfo();
    EXPECT_THAT(keptCells(model), ElementsAre("LB 1", "LW 5", "LW 6")) << "the same again, not twice";
    setEntries({{RWI, 3, 1}});
    model.initAddrInfo();
    EXPECT_THAT(keptCells(model), ElementsAre("RWI 3"));
}

TEST_F(RetentionEntries, ThatAreGoneLeaveNoBlocks)
{
    for (const bool withoutContainer : {false, true}) {
        setEntries({{LW, 5, 2}, {LB, 1, 1}, {RWI, 1, 1}});
        poweroff_protect model;
        model.extModelOpen(project.get(), QString(), &comm);
        EXPECT_EQ(keptCells(model).size(), 4U);
        if (withoutContainer)
            project->children.clear();
        else
            setEntries({});
        model.initAddrInfo();
        EXPECT_THAT(keptCells(model), IsEmpty());
    }
}

TEST_F(RetentionEntries, MayBeMany)
{
    std::vector<Entry> entries;
    for (int i = 4999; i >= 0; --i)
        entries.push_back({i % 2 ? LW : LB, 3 * i, 1});
    setEntries(entries);
    const std::vector<std::string> cells = openedCells();
    ASSERT_EQ(cells.size(), 5000U);
    EXPECT_EQ(cells.front(), "LB 0");
    EXPECT_EQ(cells[2499], "LB 14994");
    EXPECT_EQ(cells[2500], "LW 3");
    EXPECT_EQ(cells.back(), "LW 14997");
}

} // namespace
