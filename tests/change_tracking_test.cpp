// What a running module does with change messages: host calls, bytes in the files, "sync".
// SPDX-License-Identifier: MIT
#include "tests/support/change_messages.h"
#include "tests/support/module_test.h"
#include "tests/support/storage.h"

namespace {

const QString LB = QStringLiteral("LB");
const QString LW = QStringLiteral("LW");
const QString RWI = QStringLiteral("RWI");

class ChangeTracking : public ModuleTest
{
protected:
    /// A started panel that keeps these entries, with an empty call log.
    void start(const std::vector<Entry>& entries)
    {
        project = perAddressProject(entries);
        panel = startPanel(project.get());
        calls.clear();
    }

    /// Sets the cell and reports the change; the calls that the module made for it.
    QStringList change(const QString& area, int address, ushort value)
    {
        panel->areas.named(area)->setCell(address, value);
        calls.clear();
        panel->reportChange(area, address);
        return calls;
    }

    static QStringList readThenSync(const char* area, int address, int count)
    {
        return {QStringLiteral("readRegisterValues link=%1 area=%1 address=%2 selector=0 count=%3")
                    .arg(QLatin1String(area))
                    .arg(address)
                    .arg(count),
                QStringLiteral("sync")};
    }

    std::unique_ptr<object> project;
    std::unique_ptr<Panel> panel;
};

TEST_F(ChangeTracking, AChangedWordRewritesItsWholeBlockAtItsPlace)
{
    start({{LW, 100, 10}, {LW, 200, 5}});
    for (int address = 200; address < 205; ++address)
        panel->areas.named(LW)->setCell(address, static_cast<ushort>(0x1100 + address));
    EXPECT_EQ(lines(change(LW, 203, 0xbeef)), lines(readThenSync("LW", 200, 5)));
    EXPECT_EQ(hex(retentionFile(wordFileName)),
              hex(QByteArray(20, '\0') + QByteArray::fromHex("c811c911ca11efbecc11")));
    EXPECT_EQ(retentionFile(rwiFileName), QByteArray("")) << "the other word file is not touched";
}

TEST_F(ChangeTracking, AChangedRwiWordGoesToItsOwnFile)
{
    start({{RWI, 7, 2}, {LW, 7, 2}});
    EXPECT_EQ(lines(change(RWI, 8, 0x0102)), lines(readThenSync("RWI", 7, 2)));
    EXPECT_EQ(hex(retentionFile(rwiFileName)), hex(QByteArray::fromHex("00000201")));
    EXPECT_EQ(hex(retentionFile(wordFileName)), hex(QByteArray(4, '\0')));
}

TEST_F(ChangeTracking, TheLastOfTenWordsRewritesAllTwentyBytes)
{
    start({{LW, 0, 10}});
    writeRetentionFile(wordFileName, QByteArray(20, '\x77'));
    EXPECT_EQ(lines(change(LW, 9, 0x0a0b)), lines(readThenSync("LW", 0, 10)));
    EXPECT_EQ(hex(retentionFile(wordFileName)), hex(QByteArray(18, '\0') + QByteArray::fromHex("0b0a")));
}

TEST_F(ChangeTracking, AChangedBitReadsAndRewritesOneByteAndKeepsTheOtherBits)
{
    start({{LB, 100, 5}, {LB, 200, 6}});
    writeRetentionFile(bitFileName, QByteArray::fromHex("aaaa"));
    EXPECT_EQ(lines(change(LB, 203, 1)), lines(readThenSync("LB", 203, 1)));
    EXPECT_EQ(hex(retentionFile(bitFileName)), "aa ab") << "address 203 is bit 0 of byte 1";
    change(LB, 204, 0);
    EXPECT_EQ(hex(retentionFile(bitFileName)), "aa a9") << "address 204 is bit 1 of byte 1";
    change(LB, 100, 1);
    EXPECT_EQ(hex(retentionFile(bitFileName)), "ab a9") << "address 100 is bit 0 of byte 0";
    change(LB, 200, 0);
    EXPECT_EQ(hex(retentionFile(bitFileName)), "8b a9") << "address 200 is bit 5 of byte 0";
    change(LB, 202, 0);
    EXPECT_EQ(hex(retentionFile(bitFileName)), "0b a9") << "address 202 is bit 7 of byte 0";
}

TEST_F(ChangeTracking, EveryBitOfABlockHasItsPlaceInAddressOrder)
{
    start({{LB, 0, 3}, {LB, 50, 21}});
    for (int j = 0; j < 21; ++j) {
        change(LB, 50 + j, 1);
        QByteArray expected(4, '\0'); // 24 bits need three bytes, the file has one more
        const int bit = 3 + j;
        expected[bit / 8] = static_cast<char>(1 << (bit % 8));
        EXPECT_EQ(hex(retentionFile(bitFileName)), hex(expected)) << "address " << 50 + j;
        change(LB, 50 + j, 0);
        EXPECT_EQ(hex(retentionFile(bitFileName)), hex(QByteArray(4, '\0'))) << "address " << 50 + j;
    }
}

TEST_F(ChangeTracking, ABlockThatStartsOnBit7HasItsSecondAddressInTheNextByte)
{
    start({{LB, 0, 7}, {LB, 20, 2}});
    change(LB, 20, 1);
    EXPECT_EQ(hex(retentionFile(bitFileName)), "80 00");
    change(LB, 21, 1);
    EXPECT_EQ(hex(retentionFile(bitFileName)), "80 01");
}

TEST_F(ChangeTracking, TheFileHoldsTheChangeWhenSyncRuns)
{
    start({{LW, 0, 1}, {LB, 0, 1}});
    std::vector<std::string> seen;
    setCommandRunner([&](const char* command) {
        EXPECT_STREQ(command, "sync");
        seen.push_back(hex(retentionFile(bitFileName)) + "/" + hex(retentionFile(wordFileName)));
        return 0;
    });
    change(LW, 0, 0x1234);
    change(LB, 0, 1);
    setCommandRunner({});
    EXPECT_EQ(seen, std::vector<std::string>({"00/34 12", "01/34 12"}));
}

TEST_F(ChangeTracking, ABlockEndsWithItsLastAddress)
{
    start({{LW, 10, 3}, {LB, 10, 3}, {RWI, 10, 3}});
    for (const char* area : {"LW", "RWI"}) {
        EXPECT_EQ(lines(change(area, 12, 1)), lines(readThenSync(area, 10, 3)));
        EXPECT_EQ(lines(change(area, 10, 1)), lines(readThenSync(area, 10, 3)));
        EXPECT_EQ(lines(change(area, 13, 1)), "sync") << "one past the block";
        EXPECT_EQ(lines(change(area, 9, 1)), "sync") << "one before the block";
    }
    EXPECT_EQ(lines(change(LB, 12, 1)), lines(readThenSync("LB", 12, 1)));
    EXPECT_EQ(lines(change(LB, 13, 1)), "sync");
    EXPECT_EQ(lines(change(LB, 9, 1)), "sync");
    EXPECT_EQ(hex(retentionFile(wordFileName)), "01 00 00 00 01 00");
    EXPECT_EQ(hex(retentionFile(bitFileName)), "04");
}

TEST_F(ChangeTracking, EveryHandledChangeRunsSyncOnceAlsoWhenNothingIsKeptThere)
{
    start({{LW, 10, 3}});
    for (int round = 0; round < 5; ++round)
        for (const QString& area : {LB, LW, RWI})
            EXPECT_EQ(change(area, 11, static_cast<ushort>(round)).count(QStringLiteral("sync")), 1);
    EXPECT_EQ(lines(change(LB, 11, 1)), "sync") << "no entry at all in this area";
}

TEST_F(ChangeTracking, InWholeAreaModeAChangeIsABareSync)
{
    project = wholeAreaProject(1, 5);
    panel = startPanel(project.get());
    for (const QString& area : {LB, LW, RWI})
        EXPECT_EQ(lines(change(area, 3, 1)), "sync");
    EXPECT_EQ(retentionFile(wordFileName), QByteArray(131072, '\0'));
}

TEST_F(ChangeTracking, BitAddress60100IsIgnoredAndTheNextIsNot)
{
    start({{LB, 60096, 8}});
    EXPECT_EQ(lines(change(LB, 60100, 1)), "") << "nothing is read and no sync runs";
    EXPECT_EQ(hex(retentionFile(bitFileName)), "00 00");
    EXPECT_EQ(lines(change(LB, 60099, 1)), lines(readThenSync("LB", 60099, 1)));
    EXPECT_EQ(lines(change(LB, 60101, 1)), lines(readThenSync("LB", 60101, 1)));
    EXPECT_EQ(hex(retentionFile(bitFileName)), "28 00");
}

TEST_F(ChangeTracking, BitAddress60100IsIgnoredWithoutABlockToo)
{
    start({{LW, 0, 1}});
    EXPECT_EQ(lines(change(LB, 60100, 1)), "");
    EXPECT_EQ(lines(change(LB, 60101, 1)), "sync");
}

TEST_F(ChangeTracking, WordAddress60100IsKeptLikeAnyOther)
{
    start({{LW, 60100, 1}, {RWI, 60100, 1}});
    EXPECT_EQ(lines(change(LW, 60100, 0x0102)), lines(readThenSync("LW", 60100, 1)));
    EXPECT_EQ(lines(change(RWI, 60100, 0x0304)), lines(readThenSync("RWI", 60100, 1)));
    EXPECT_EQ(hex(retentionFile(wordFileName)), "02 01");
    EXPECT_EQ(hex(retentionFile(rwiFileName)), "04 03");
}

TEST_F(ChangeTracking, ANullMessageIsIgnored)
{
    start({{LW, 0, 1}});
    panel->model->addrOptChangeMsg(nullptr);
    EXPECT_EQ(lines(calls), "");
    EXPECT_EQ(lines(change(LW, 0, 1)), lines(readThenSync("LW", 0, 1))) << "any other one is not";
}

TEST_F(ChangeTracking, MessagesBeforeTheInitialisationAreIgnored)
{
    project = perAddressProject({{LW, 0, 1}});
    panel = makePanel(project.get());
    EXPECT_EQ(lines(change(LW, 0, 1)), "") << "not open yet";
    panel->open();
    EXPECT_EQ(lines(change(LW, 0, 1)), "") << "open, not initialised";
    EXPECT_EQ(retentionFile(wordFileName), std::nullopt);
    panel->init();
    EXPECT_EQ(lines(change(LW, 0, 1)), lines(readThenSync("LW", 0, 1)));
}

TEST_F(ChangeTracking, InWholeAreaModeMessagesBeforeTheInitialisationAreIgnoredToo)
{
    project = wholeAreaProject(1, 5);
    panel = makePanel(project.get());
    panel->open();
    EXPECT_EQ(lines(change(LW, 0, 1)), "");
    panel->init();
    EXPECT_EQ(lines(change(LW, 0, 1)), "sync");
}

TEST_F(ChangeTracking, NamesThatDifferInAnyLetterAreIgnored)
{
    start({{LB, 0, 4}, {LW, 0, 4}, {RWI, 0, 4}});
    for (const char* name :
         {"", "lb", "Lb", "LB ", " LB", "L", "LBX", "lw", "LWI", "LW\n", "rwi", "RW", "RWi", "RWI ", "RWI2",
          "A very long name of no area at all, well past 32 letters"}) {
        panel->model->addrOptChangeMsg(RawMessage(name, 1));
        EXPECT_EQ(lines(calls), "") << '"' << name << '"';
    }
    panel->model->addrOptChangeMsg(RawMessage("RWI", 1));
    EXPECT_EQ(lines(calls), lines(readThenSync("RWI", 0, 4)));
}

TEST_F(ChangeTracking, OnlyTheAddressAndTheTerminatedNameOfAMessageCount)
{
    start({{LW, 0, 4}});
    for (const char filler : {'\0', '\x5a', '\xff'}) {
        calls.clear();
        panel->model->addrOptChangeMsg(RawMessage("LW", 1, filler));
        EXPECT_EQ(lines(calls), lines(readThenSync("LW", 0, 4)));
    }
}

TEST_F(ChangeTracking, WithoutACommunicationInterfaceAChangeIsDroppedWithoutSync)
{
    const ModelPointer model = moduleLibrary().createModel();
    MemoryAreas areas;
    SimulatedComm comm(areas);
    project = perAddressProject({{LW, 1, 1}});
    for (InterfaceComm* const given :
         {static_cast<InterfaceComm*>(&comm), static_cast<InterfaceComm*>(nullptr)}) {
        model->extModelOpen(project.get(), QString(), given);
        model->extModelInit();
        calls.clear();
        model->addrOptChangeMsg(RawMessage("LW", 1));
        EXPECT_EQ(lines(calls), given ? lines(readThenSync("LW", 1, 1)) : "");
    }
}

TEST_F(ChangeTracking, CellsThatTheHostCannotReadAreStoredAsZero)
{
    start({{LW, 65534, 4}}); // two of them lie behind the area
    writeRetentionFile(wordFileName, QByteArray(8, '\x77'));
    change(LW, 65535, 0x0102);
    EXPECT_EQ(hex(retentionFile(wordFileName)), "00 00 02 01 00 00 00 00");
}

TEST_F(ChangeTracking, WordsBehindTheEndOfAShortFileMakeItLonger)
{
    start({{LW, 0, 2}, {LW, 10, 2}});
    writeRetentionFile(wordFileName, QByteArray("\x11"));
    change(LW, 11, 0x0102);
    EXPECT_EQ(hex(retentionFile(wordFileName)), "11 00 00 00 00 00 02 01");
}

TEST_F(ChangeTracking, ABitBehindTheEndOfAShortFileIsOnItsOwnInItsByte)
{
    start({{LB, 0, 30}});
    writeRetentionFile(bitFileName, QByteArray("\xff"));
    change(LB, 20, 1);
    EXPECT_EQ(hex(retentionFile(bitFileName)), "ff 00 10");
    change(LB, 29, 0);
    EXPECT_EQ(hex(retentionFile(bitFileName)), "ff 00 10 00");
}

TEST_F(ChangeTracking, ALongerFileKeepsItsTail)
{
    writeRetentionFile(wordFileName, QByteArray(6, '\x77'));
    start({{LW, 0, 2}});
    change(LW, 0, 0x0102);
    EXPECT_EQ(hex(retentionFile(wordFileName)), "02 01 77 77 77 77");
}

TEST_F(ChangeTracking, AMissingFileIsTriedAgainWithEveryChange)
{
    start({{LW, 0, 2}, {LB, 0, 2}});
    ASSERT_TRUE(QFile::remove(retentionPath(wordFileName)));
    ASSERT_TRUE(QFile::remove(retentionPath(bitFileName)));
    EXPECT_EQ(lines(change(LW, 1, 7)), lines(readThenSync("LW", 0, 2))) << "the host is read all the same";
    EXPECT_EQ(lines(change(LB, 1, 1)), lines(readThenSync("LB", 1, 1)));
    EXPECT_EQ(retentionFile(wordFileName), std::nullopt) << "a change makes no file";
    EXPECT_EQ(retentionFile(bitFileName), std::nullopt);

    writeRetentionFile(wordFileName, QByteArray());
    writeRetentionFile(bitFileName, QByteArray("\x10"));
    change(LW, 1, 8);
    change(LB, 1, 1);
    EXPECT_EQ(hex(retentionFile(wordFileName)), "00 00 08 00");
    EXPECT_EQ(hex(retentionFile(bitFileName)), "12");
}

TEST_F(ChangeTracking, AnAddressInNoBlockDoesNotOpenTheFile)
{
    start({{LW, 0, 2}});
    change(LW, 5, 1);
    ASSERT_TRUE(QFile::remove(retentionPath(wordFileName)));
    writeRetentionFile(wordFileName, QByteArray(4, '\x77'));
    change(LW, 1, 2);
    EXPECT_EQ(hex(retentionFile(wordFileName)), "00 00 02 00") << "the file that is there now is written";
}

TEST_F(ChangeTracking, AnOpenFileStaysOpenAfterItsNameIsGone)
{
    start({{LW, 0, 2}});
    change(LW, 1, 2);
    ASSERT_TRUE(QFile::remove(retentionPath(wordFileName)));
    writeRetentionFile(wordFileName, QByteArray(4, '\x77'));
    change(LW, 1, 3);
    EXPECT_EQ(hex(retentionFile(wordFileName)), "77 77 77 77");
}

TEST_F(ChangeTracking, ADirectoryInAFilesPlaceLosesOnlyThatArea)
{
    QDir().mkpath(retentionPath(wordFileName));
    start({{LW, 0, 2}, {RWI, 0, 2}, {LB, 0, 2}});
    EXPECT_EQ(lines(change(LW, 1, 7)), lines(readThenSync("LW", 0, 2)));
    change(RWI, 1, 7);
    change(LB, 1, 1);
    EXPECT_TRUE(QFileInfo(retentionPath(wordFileName)).isDir());
    EXPECT_EQ(hex(retentionFile(rwiFileName)), "00 00 07 00");
    EXPECT_EQ(hex(retentionFile(bitFileName)), "02");
}

TEST_F(ChangeTracking, WithoutAProjectDirectoryTheHostIsReadAndSyncRuns)
{
    blockProjectDirectory();
    start({{LW, 0, 2}, {LB, 0, 2}});
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(lines(change(LW, 1, 7)), lines(readThenSync("LW", 0, 2)));
        EXPECT_EQ(lines(change(LB, 1, 1)), lines(readThenSync("LB", 1, 1)));
    }
}

TEST_F(ChangeTracking, AReadOnlyDirectoryKeepsItsFilesUntilItCanBeWritten)
{
    NEEDS_A_MOUNT();
    mountOnProjectDirectory("size=1m");
    start({{LW, 0, 2}});
    remountProjectDirectory("size=1m", MS_RDONLY);
    EXPECT_EQ(lines(change(LW, 1, 7)), lines(readThenSync("LW", 0, 2)));
    EXPECT_EQ(hex(retentionFile(wordFileName)), "00 00 00 00");
    remountProjectDirectory("size=1m");
    change(LW, 1, 8);
    EXPECT_EQ(hex(retentionFile(wordFileName)), "00 00 08 00");
}

TEST_F(ChangeTracking, AStreamThatFailedOnAFullDiskKeepsFailingUntilTheNextStart)
{
    NEEDS_A_MOUNT();
    mountOnProjectDirectory("size=4k"); // new files have holes only: one page is all there is
    start({{LB, 0, 8}, {LW, 0, 8}, {RWI, 0, 1}});
    change(LB, 0, 1); // takes the page
    EXPECT_EQ(hex(retentionFile(bitFileName)), "01 00");
    EXPECT_EQ(lines(change(LW, 1, 7)), lines(readThenSync("LW", 0, 8)));
    EXPECT_EQ(hex(retentionFile(wordFileName)), hex(QByteArray(16, '\0')));

    remountProjectDirectory("size=1m");
    EXPECT_EQ(lines(change(LW, 1, 8)), lines(readThenSync("LW", 0, 8))) << "read and sync go on";
    EXPECT_EQ(hex(retentionFile(wordFileName)), hex(QByteArray(16, '\0'))) << "a failed stream stays failed";
    change(LB, 1, 1);
    change(RWI, 0, 9);
    EXPECT_EQ(hex(retentionFile(bitFileName)), "03 00") << "the others go on";
    EXPECT_EQ(hex(retentionFile(rwiFileName)), "09 00");

    panel = startPanel(project.get());
    change(LW, 1, 8);
    EXPECT_EQ(hex(retentionFile(wordFileName)), hex(QByteArray::fromHex("00000800") + QByteArray(12, '\0')));
}

TEST_F(ChangeTracking, ChangesOfEveryAreaAreBackAfterARestart)
{
    start({{LB, 10, 20}, {LW, 100, 10}, {LW, 200, 5}, {RWI, 0, 3}});
    change(LB, 11, 1);
    change(LB, 29, 1);
    change(LW, 203, 1234);
    change(RWI, 2, 65535);
    panel = startPanel(project.get());
    EXPECT_EQ(panel->areas.named(LB)->cell(11), 1);
    EXPECT_EQ(panel->areas.named(LB)->cell(29), 1);
    EXPECT_EQ(panel->areas.named(LB)->cell(10), 0);
    EXPECT_EQ(panel->areas.named(LW)->cell(203), 1234);
    EXPECT_EQ(panel->areas.named(RWI)->cell(2), 65535);
}

} // namespace
