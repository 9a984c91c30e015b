// Tests what a running module does with change messages: host calls, bytes in the files, "sync".
// SPDX-License-Identifier: MIT
#include "tests/support/module_test.h"
#include "tests/support/storage.h"
#include "tests/support/word_bytes.h"

#include <array>
#include <cstring>

namespace {

/// A message as raw bytes: everything except the address at 12 and the terminated name at 20 is arbitrary.
class RawMessage
{
public:
    RawMessage(const QByteArray& area, int address)
    {
        bytes.fill('\x5a');
        std::memcpy(bytes.data() + 12, &address, sizeof address);
        std::memcpy(bytes.data() + 20, area.constData(), static_cast<std::size_t>(area.size()) + 1);
    }

    operator const _ExtendTriggerMsg_t*() const
    {
        return reinterpret_cast<const _ExtendTriggerMsg_t*>(bytes.data());
    }

private:
    alignas(8) std::array<char, 128> bytes;
};

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

TEST_F(ChangeTracking, ABlockWhoseSizeInBytesWrapsIsNeitherRestoredNorWrittenAndTheOtherIs)
{
    writeRetentionFile(wordFileName, wordBytes("0100020003000400"));
    project = perAddressProject({{LW, 0, 2}, {LW, 100, (1 << 30) + 100}});
    panel = makePanel(project.get());
    panel->open();
    panel->init();
    EXPECT_EQ(lines(callsTo({QStringLiteral("writeRegisterValues")})),
              "writeRegisterValues link=Local area=LW address=0 selector=-1 count=2 data=1,2");
    EXPECT_EQ(lines(change(LW, 150, 9)), "sync") << "nothing is read for it";
    EXPECT_EQ(lines(change(LW, 1, 7)), lines(readThenSync("LW", 0, 2)));
    EXPECT_EQ(hex(retentionFile(wordFileName)), hex(wordBytes("0100070003000400")));
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

} // namespace
