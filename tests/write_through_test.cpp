// The write-through of one change into given blocks and a given stream, with answers of the host's choosing.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/poweroff_protect.h"
#include "tests/support/module_test.h"
#include "tests/support/scripted_comm.h"
#include "tests/support/storage.h"

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
    EXPECT_EQ(changed("LW", 11), "0a 01 0b 01 77 77 0b 01 0c 01 0d 01 0b 01");
    EXPECT_EQ(readsOf(comm), "LW 10 2\nLW 11 3\nLW 11 1\n");
    EXPECT_EQ(lines(calls), "sync");
}

TEST_F(WriteThrough, SetsOverlappingBitsInEveryBlock)
{
    writeRetentionFile(fileName, QByteArray(2, '\0'));
    blocks = {blockAt(10, 4, 0), blockAt(11, 4, 0, 7)};
    comm.value = [](const QString&, int) { return 1; };
    EXPECT_EQ(changed("LB", 12), "04 01");
    EXPECT_EQ(readsOf(comm), "LB 12 1\nLB 12 1\n");
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

TEST_F(WriteThrough, OfANullNameDoesNothingAtAll)
{
    writeRetentionFile(fileName, QByteArray(4, '\x77'));
    blocks = {blockAt(0, 2, 0, 0, "LW")};
    EXPECT_EQ(changed(nullptr, 1), "77 77 77 77");
    EXPECT_EQ(readsOf(comm), "");
    EXPECT_EQ(lines(calls), "") << "no sync either";
    EXPECT_FALSE(file.is_open());
}

TEST_F(WriteThrough, WithoutACommunicationInterfaceDoesNothingAtAll)
{
    writeRetentionFile(fileName, QByteArray(4, '\x77'));
    blocks = {blockAt(0, 2, 0)};
    model.extModelOpen(nullptr, QString(), nullptr);
    EXPECT_EQ(changed("LW", 1), "77 77 77 77");
    EXPECT_EQ(lines(calls), "");
    EXPECT_FALSE(file.is_open());
}

TEST_F(WriteThrough, TakesAllSixteenBitsOfABitsValue)
{
    writeRetentionFile(fileName, QByteArray(1, '\0'));
    blocks = {blockAt(0, 8, 0)};
    for (const ushort value : {0x0001, 0x0100, 0x8000, 0xffff, 0x0002}) {
        comm.value = [](const QString&, int) { return 0; };
        EXPECT_EQ(changed("LB", 4), "00");
        comm.value = [value](const QString&, int) { return value; };
        EXPECT_EQ(changed("LB", 4), "10") << value;
    }
}

TEST_F(WriteThrough, GivesTheHostZeroedBuffersAndStoresWhatItLeavesInThem)
{
    writeRetentionFile(fileName, QByteArray(6, '\x77'));
    blocks = {blockAt(0, 3, 0)};
    EXPECT_EQ(changed("LW", 0), "00 00 00 00 00 00");
    ASSERT_EQ(comm.calls.size(), 1U);
    EXPECT_THAT(comm.calls[0].data, testing::Each(0));
    writeRetentionFile(fileName, QByteArray(1, '\xff'));
    EXPECT_EQ(changed("LB", 2).substr(0, 2), "fb");
    EXPECT_THAT(comm.calls[0].data, testing::ElementsAre(0));
}

TEST_F(WriteThrough, TakesNoNoticeOfTheHostsResult)
{
    writeRetentionFile(fileName, QByteArray(2, '\0'));
    blocks = {blockAt(0, 1, 0)};
    for (const int result : {-1, 0, 1, 12345}) {
        comm.result = result;
        comm.value = [result](const QString&, int) { return static_cast<ushort>(result & 0xff); };
        EXPECT_EQ(changed("LW", 0),
                  hex(QByteArray(1, static_cast<char>(result & 0xff)) + QByteArray(1, '\0')));
        EXPECT_EQ(lines(calls), "sync");
    }
}

TEST_F(WriteThrough, UsesTheStreamThatIsOpenWhateverItsFile)
{
    writeRetentionFile(fileName, QByteArray(2, '\x77'));
    writeRetentionFile("other.dat", QByteArray(2, '\x77'));
    model.checkFile(file, "other.dat");
    blocks = {blockAt(0, 1, 0)};
    comm.value = [](const QString&, int) { return 0x0102; };
    EXPECT_EQ(changed("LW", 0), "77 77");
    EXPECT_EQ(hex(retentionFile("other.dat")), "02 01");
}

TEST_F(WriteThrough, ABlockInFrontOfTheFileFailsTheStreamForGood)
{
    writeRetentionFile(fileName, QByteArray(4, '\x77'));
    blocks = {blockAt(0, 1, -4), blockAt(10, 1, 0)};
    comm.value = [](const QString&, int) { return 0x0102; };
    EXPECT_EQ(changed("LW", 0), "77 77 77 77");
    EXPECT_TRUE(file.fail());
    EXPECT_EQ(changed("LW", 10), "77 77 77 77") << "the stream is open and stays failed";
    EXPECT_EQ(readsOf(comm), "LW 10 1\n");
    EXPECT_EQ(lines(calls), "sync");
}

TEST_F(WriteThrough, ABitWithANegativeRemainderIsNoBitOfTheFile)
{
    writeRetentionFile(fileName, QByteArray(4, '\x77'));
    blocks = {blockAt(0, 8, 2, -3)}; // as behind a negative count
    comm.value = [](const QString&, int) { return 1; };
    for (int address = 0; address < 3; ++address) {
        EXPECT_EQ(changed("LB", address), "77 77 77 77") << address;
        EXPECT_EQ(readsOf(comm), "LB " + std::to_string(address) + " 1\n");
        EXPECT_EQ(lines(calls), "sync");
    }
    EXPECT_EQ(changed("LB", 6), "77 77 7f 77") << "from its fourth cell on the block lies in its byte";
}

TEST_F(WriteThrough, ABitWithANegativeRemainderHasItsByteWrittenBackAsItWas)
{
    writeRetentionFile(fileName, QByteArray(2, '\x77'));
    blocks = {blockAt(0, 8, 2, -3)};
    comm.value = [](const QString&, int) { return 1; };
    EXPECT_EQ(changed("LB", 0), "77 77 00") << "the byte past the end reads as 0 and is written";
    EXPECT_FALSE(file.fail());
}

TEST_F(WriteThrough, ABitBeforeTheFileFailsItsStreamForGood)
{
    for (const int bitOffset : {-9, -16}) { // a negative remainder, and none
        file = std::fstream();
        writeRetentionFile(fileName, QByteArray(2, '\x70'));
        blocks = {blockAt(0, 1, 0, bitOffset), blockAt(10, 1, 0)};
        comm.value = [](const QString&, int) { return 1; };
        EXPECT_EQ(changed("LB", 0), "70 70");
        EXPECT_TRUE(file.fail()) << bitOffset;
        EXPECT_EQ(changed("LB", 10), "70 70") << "the stream is open and stays failed";
    }
}

TEST_F(WriteThrough, AWholeByteInFrontOfItsBlocksByteLiesInTheByteBefore)
{
    writeRetentionFile(fileName, QByteArray(4, '\x76'));
    blocks = {blockAt(0, 9, 2, -8)}; // as behind counts of -7 and -7
    comm.value = [](const QString&, int) { return 1; };
    EXPECT_EQ(changed("LB", 0), "76 77 76 76");
    EXPECT_EQ(changed("LB", 1), "76 77 76 76") << "a remainder of -7 is no bit of any byte";
    EXPECT_EQ(changed("LB", 8), "76 77 77 76");
}

} // namespace
