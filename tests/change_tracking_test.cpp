// Tests what a running module does with change messages: host calls, bytes in the files, "sync".
// SPDX-License-Identifier: MIT
#include "tests/support/change_messages.h"
#include "tests/support/module_test.h"
#include "tests/support/storage.h"
#include "tests/support/word_bytes.h"

namespace {

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

    /// Sets the cell and reports the change; returns the calls that the module made.
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
              hex(QByteArray(20, '\0') + wordBytes("c811c911ca11efbecc11")));
    EXPECT_EQ(retentionFile(rwiFileName), QByteArray("")) << "the other word file is not touched";
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
    const std::string word = hex(wordBytes("3412"));
    EXPECT_EQ(seen, std::vector<std::string>({"00/" + word, "01/" + word}));
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
