// Tests the write-through of one change into given blocks and a given stream, with scripted answers of the
// host.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/poweroff_protect.h"
#include "tests/support/module_test.h"
#include "tests/support/scripted_comm.h"
#include "tests/support/storage.h"
#include "tests/support/word_bytes.h"

namespace {

MaintenanceFileInfo blockAt(int index, int count, int fileOffset, int bitOffset = 0,
                            const char* area = "of no importance")
{
    MaintenanceFileInfo block;
    block.address.link = QStringLiteral("Local");
    block.address.block = QString::fromLatin1(area);
    block.address.index = index;
    block.count = count;
    block.fileOffset = fileOffset;
    block.bitOffset = bitOffset;
    return block;
}

/// "area address count" of every read.
std::string readsOf(const ScriptedComm& comm)
{
    std::string text;
    for (const ScriptedComm::Call& call : comm.calls) {
        EXPECT_FALSE(call.write);
        EXPECT_TRUE(call.link == call.area) << "the area's name is the link too";
        EXPECT_EQ(call.selector, 0);
        text += call.area.toStdString() + ' ' + std::to_string(call.address) + ' ' +
                std::to_string(call.count) + '\n';
    }
    return text;
}

class WriteThrough : public ModuleTest
{
protected:
    WriteThrough()
    {
        model.extModelOpen(nullptr, QString(), &comm);
        calls.clear();
    }

    /// The file after the change of that cell.
    std::string changed(const char* areaName, int address)
    {
        comm.calls.clear();
        calls.clear();
        model.poweroffMaintenance(file, blocks, areaName, address, fileName);
        return hex(retentionFile(fileName));
    }

    static constexpr const char* fileName = "some.dat";
    ScriptedComm comm;
    poweroff_protect model;
    std::fstream file;
    QList<MaintenanceFileInfo> blocks;
};

TEST_F(WriteThrough, GoesThroughEveryBlockThatHoldsTheCellAndSyncsOnce)
{
    writeRetentionFile(fileName, QByteArray(14, '\x77'));
    blocks = {blockAt(10, 2, 0), blockAt(50, 1, 4), blockAt(11, 3, 6), blockAt(11, 1, 12)};
    comm.value = [](const QString&, int address) { return static_cast<ushort>(0x100 + address); };
    EXPECT_EQ(changed("LW", 11), hex(wordBytes("0a010b0177770b010c010d010b01")));
    EXPECT_EQ(readsOf(comm), "LW 10 2\nLW 11 3\nLW 11 1\n");
    EXPECT_EQ(lines(calls), "sync");
}

TEST_F(WriteThrough, ChoosesByTheGivenNameAndNotByTheBlocks)
{
    writeRetentionFile(fileName, QByteArray(4, '\0'));
    comm.value = [](const QString&, int) { return 0x0101; };
    blocks = {blockAt(0, 2, 0, 0, "LW")};
    EXPECT_EQ(changed("LB", 1), "02 00 00 00");
    blocks = {blockAt(0, 2, 0, 0, "LB")};
    EXPECT_EQ(changed("RWI", 1), "01 01 01 01");
    EXPECT_EQ(readsOf(comm), "RWI 0 2\n");
}

TEST_F(WriteThrough, OfAnotherAreaOpensTheFileAndSyncsAndDoesNothingElse)
{
    writeRetentionFile(fileName, QByteArray(4, '\x77'));
    blocks = {blockAt(0, 2, 0, 0, "LW")};
    for (const char* name : {"lw", "LX", "", "LW "}) {
        EXPECT_EQ(changed(name, 1), "77 77 77 77") << name;
        EXPECT_EQ(readsOf(comm), "") << name;
        EXPECT_EQ(lines(calls), "sync") << name;
        EXPECT_TRUE(file.is_open()) << name;
    }
}

TEST_F(WriteThrough, WithoutAMatchOnlySyncsAndLeavesTheStreamClosed)
{
    writeRetentionFile(fileName, QByteArray(4, '\x77'));
    changed("LW", 1);
    EXPECT_EQ(lines(calls), "sync") << "no blocks at all";
    blocks = {blockAt(2, 5, 0), blockAt(0, 0, 0), blockAt(1, 0, 0), blockAt(1, -4, 0), blockAt(-9, 10, 0)};
    EXPECT_EQ(changed("LW", 1), "77 77 77 77");
    EXPECT_EQ(readsOf(comm), "");
    EXPECT_EQ(lines(calls), "sync");
    EXPECT_FALSE(file.is_open());
}

TEST_F(WriteThrough, ComparesAddressesSigned)
{
    writeRetentionFile(fileName, QByteArray(6, '\0'));
    comm.value = [](const QString&, int) { return 0x0101; };
    blocks = {blockAt(-3, 3, 0)};
    EXPECT_EQ(changed("LW", -1), "01 01 01 01 01 01");
    EXPECT_EQ(readsOf(comm), "LW -3 3\n");
}

TEST_F(WriteThrough, OfANullNameOrWithoutACommunicationInterfaceDoesNothingAtAll)
{
    writeRetentionFile(fileName, QByteArray(4, '\x77'));
    blocks = {blockAt(0, 2, 0)};
    for (const bool hasComm : {true, false}) {
        model.extModelOpen(nullptr, QString(), hasComm ? &comm : nullptr);
        EXPECT_EQ(changed(hasComm ? nullptr : "LW", 1), "77 77 77 77");
        EXPECT_EQ(readsOf(comm) + lines(calls), "") << "no sync either";
        EXPECT_FALSE(file.is_open());
    }
    model.extModelOpen(nullptr, QString(), &comm);
    EXPECT_EQ(changed("LW", 1), "00 00 00 00") << "with both it does";
}

TEST_F(WriteThrough, TakesAllSixteenBitsOfABitsValueAndNoNoticeOfTheHostsResult)
{
    writeRetentionFile(fileName, QByteArray(1, '\0'));
    blocks = {blockAt(0, 8, 0)};
    for (const ushort value : {0x0001, 0x0100, 0x8000, 0xffff, 0x0002}) {
        comm.result = value - 2; // which does not matter
        comm.value = [](const QString&, int) { return 0; };
        EXPECT_EQ(changed("LB", 4), "00");
        comm.value = [value](const QString&, int) { return value; };
        EXPECT_EQ(changed("LB", 4), "10") << value;
    }
}

TEST_F(WriteThrough, ABlockInFrontOfTheFileFailsTheStreamForGood)
{
    comm.value = [](const QString&, int) { return 0x0102; };
    const MaintenanceFileInfo inFront[] = {blockAt(0, 1, -4), blockAt(0, 1, 0, -9), blockAt(0, 1, 0, -16)};
    for (const MaintenanceFileInfo& block : inFront) {
        const char* const area = block.bitOffset == 0 ? "LW" : "LB";
        file = std::fstream();
        writeRetentionFile(fileName, QByteArray(4, '\x70'));
        blocks = {block, blockAt(10, 1, 0)};
        EXPECT_EQ(changed(area, 0), "70 70 70 70");
        EXPECT_TRUE(file.fail());
        EXPECT_EQ(changed(area, 10), "70 70 70 70") << "the stream is open and stays failed";
        EXPECT_EQ(readsOf(comm), area + std::string(" 10 1\n"));
        EXPECT_EQ(lines(calls), "sync");
    }
}

TEST_F(WriteThrough, BitsThatNegativeCountsMoveLieInTheByteOfTheirQuotientOrInNone)
{
    const struct
    {
        int fileOffset, bitOffset, address;
        const char* after;
    } cases[] = {{2, -3, 0, "70 70 70 70"}, // a negative remainder is no bit: the byte is written as it was
                 {2, -3, 2, "70 70 70 70"},    {2, -3, 6, "70 70 78 70"},
                 {4, -3, 0, "70 70 70 70 00"}, // even one past the end, which reads as 0
                 {2, -8, 0, "70 71 70 70"},    {2, -8, 1, "70 70 70 70"},
                 {2, -8, 8, "70 70 71 70"}};
    comm.value = [](const QString&, int) { return 1; };
    for (const auto& each : cases) {
        writeRetentionFile(fileName, QByteArray(4, '\x70'));
        blocks = {blockAt(0, 9, each.fileOffset, each.bitOffset)};
        EXPECT_EQ(changed("LB", each.address), each.after) << each.bitOffset << ' ' << each.address;
        EXPECT_EQ(readsOf(comm), "LB " + std::to_string(each.address) + " 1\n");
        EXPECT_EQ(lines(calls), "sync");
        EXPECT_FALSE(file.fail());
    }
}

} // namespace
