// Tests the file set-up and the restore with blocks, codes and streams of the test's choice.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/poweroff_protect.h"
#include "tests/support/module_test.h"
#include "tests/support/scripted_comm.h"
#include "tests/support/storage.h"
#include "tests/support/word_bytes.h"

#include <limits>

namespace {

/// Blocks have places of their own: those in a list need not fit together.
MaintenanceFileInfo blockAt(const char* area, int index, int count, int fileOffset = 0, int bitOffset = 0)
{
    MaintenanceFileInfo block;
    block.address.link = QStringLiteral("link of %1").arg(index);
    block.address.block = QString::fromLatin1(area);
    block.address.index = index;
    block.count = count;
    block.fileOffset = fileOffset;
    block.bitOffset = bitOffset;
    return block;
}

class RestoreOperations : public ModuleTest
{
protected:
    /// A module whose three streams are open on these files.
    void openFiles(const QByteArray& bits, const QByteArray& words, const QByteArray& rwis)
    {
        writeRetentionFile(bitFileName, bits);
        writeRetentionFile(wordFileName, words);
        writeRetentionFile(rwiFileName, rwis);
        model.extModelOpen(nullptr, QString(), &comm);
        model.extModelInit();
        ASSERT_TRUE(comm.calls.empty());
    }

    /// "area address: values" of every write of that restore.
    std::string restored(QList<MaintenanceFileInfo> blocks)
    {
        comm.calls.clear();
        model.initMaintenance(blocks);
        std::string text;
        for (const ScriptedComm::Call& call : comm.calls) {
            EXPECT_TRUE(call.write);
            EXPECT_EQ(call.selector, -1);
            text += call.area.toStdString() + ' ' + std::to_string(call.address) + ':';
            for (const ushort value : call.data)
                text += ' ' + std::to_string(value);
            text += '\n';
        }
        return text;
    }

    /// The length of the file that the set-up makes; -1 without a file.
    int madeLength(const std::vector<int>& counts, int code)
    {
        QFile::remove(retentionPath(QStringLiteral("some.dat")));
        QList<MaintenanceFileInfo> blocks;
        for (const int count : counts)
            blocks.append(blockAt("of no importance", 0, count));
        std::fstream file;
        QFileInfo info;
        model.initFile(file, info, QStringLiteral("some.dat"), blocks, code);
        EXPECT_FALSE(file.is_open());
        EXPECT_TRUE(file.good());
        const auto made = retentionFile(QStringLiteral("some.dat"));
        EXPECT_EQ(made.value_or(QByteArray()).count('\0'), made.value_or(QByteArray()).size()) << "all zero";
        return made ? made->size() : -1;
    }

    ScriptedComm comm;
    poweroff_protect model;
};

TEST_F(RestoreOperations, TheCodeDecidesTheLengthOfANewFile)
{
    EXPECT_EQ(madeLength({10, 5}, 1), 2);
    EXPECT_EQ(madeLength({10, 6}, 1), 3) << "one too many for a multiple of eight";
    EXPECT_EQ(madeLength({}, 1), 1);
    EXPECT_EQ(madeLength({-9, 8}, 1), 1) << "-1 / 8 + 1";
    for (const int code : {2, 5}) {
        EXPECT_EQ(madeLength({10, 5}, code), 30) << code;
        EXPECT_EQ(madeLength({}, code), 0) << code;
        EXPECT_EQ(madeLength({-2, 5}, code), 6) << code;
        EXPECT_EQ(madeLength({-4}, code), 0) << code;
    }
    for (const int code : {0, 3, 4, 6, -1, 258, std::numeric_limits<int>::max()})
        EXPECT_EQ(madeLength({10, 5}, code), 0) << code;
}

TEST_F(RestoreOperations, AnExistingFileIsOpenedOnTheGivenStream)
{
    writeRetentionFile("some.dat", QByteArray(3, '\x11'));
    std::fstream file;
    QFileInfo info;
    QList<MaintenanceFileInfo> blocks;
    for (const int code : {1, 7}) {
        file.close();
        file.clear();
        model.initFile(file, info, QStringLiteral("some.dat"), blocks, code);
        EXPECT_TRUE(file.is_open());
        EXPECT_TRUE(file.good());
        EXPECT_EQ(retentionFile("some.dat"), QByteArray(3, '\x11'));
        EXPECT_EQ(info.filePath().toStdString(), "/usr/tavrin/project/some.dat");
    }
    char bytes[3] = {};
    EXPECT_TRUE(file.read(bytes, 3));
    EXPECT_TRUE(file.seekp(0) && file.write("\x22", 1).flush()) << "it can be written too";
}

TEST_F(RestoreOperations, OpeningAStreamThatIsOpenFailsItAndTheRestoreGoesOn)
{
    openFiles(QByteArray("\x01"), QByteArray(2, '\x11'), QByteArray(2, '\x22'));
    writeRetentionFile("some.dat", QByteArray(3, '\x11'));
    std::fstream file;
    QFileInfo info;
    QList<MaintenanceFileInfo> blocks = {blockAt("RWI", 4, 1)};
    for (int round = 0; round < 2; ++round) {
        comm.calls.clear();
        model.initFile(file, info, QStringLiteral("some.dat"), blocks, 5);
        EXPECT_EQ(file.fail(), round == 1);
        ASSERT_EQ(comm.calls.size(), 1U) << "restored from the module's own file, whatever the stream";
        EXPECT_THAT(comm.calls[0].data, testing::ElementsAre(0x2222));
    }
}

TEST_F(RestoreOperations, TheBlocksOwnAreaChoosesTheFileAndItsLinkIsHandedOn)
{
    openFiles(QByteArray("\x05"), wordBytes("0102"), wordBytes("0304"));
    EXPECT_EQ(restored({blockAt("RWI", 7, 1), blockAt("LB", 8, 2), blockAt("LW", 9, 1)}),
              "RWI 7: 1027\nLB 8: 1\nLB 9: 0\nLW 9: 513\n");
    EXPECT_EQ(comm.calls[0].link.toStdString(), "link of 7");
    EXPECT_EQ(comm.calls[1].link.toStdString(), "link of 8");
    EXPECT_EQ(comm.calls[3].link.toStdString(), "link of 9");
}

TEST_F(RestoreOperations, BitsAreFoundByTheirRunningNumberAndNotByTheBlocksPlace)
{
    openFiles(QByteArray::fromHex("0180"), QByteArray(1, '\0'), QByteArray(1, '\0'));
    EXPECT_EQ(
        restored({blockAt("LB", 0, 1, 1, 7), blockAt("LB", 100, 14, 50, 3), blockAt("LB", 200, 1, 0, 0)}),
        "LB 0: 1\nLB 100: 0\nLB 101: 0\nLB 102: 0\nLB 103: 0\nLB 104: 0\nLB 105: 0\nLB 106: 0\nLB 107: "
        "0\nLB 108: 0\nLB 109: 0\nLB 110: 0\nLB 111: 0\nLB 112: 0\nLB 113: 0\nLB 200: 1\n");
}

TEST_F(RestoreOperations, WordsAreFoundByTheirBlocksPlace)
{
    openFiles(QByteArray(1, '\0'), QByteArray::fromHex("010002000300"), QByteArray::fromHex("010002000300"));
    for (const char* area : {"LW", "RWI"})
        EXPECT_EQ(restored({blockAt(area, 7, 1, 4), blockAt(area, 8, 2, 1)}),
                  std::string(area) + " 7: " + std::to_string(wordIn("0300")) + "\n" + area +
                      " 8: " + std::to_string(wordIn("0002")) + " " + std::to_string(wordIn("0003")) + "\n");
}

TEST_F(RestoreOperations, OtherAreasAreNotRestoredAndMoveTheRunningNumber)
{
    openFiles(QByteArray::fromHex("21"), QByteArray(20, '\0'), QByteArray(20, '\0'));
    const struct
    {
        const char* area;
        const char *restored5, *restored4;
        int bitAfter4;
    } cases[] = {
        {"RWI", "RWI 0: 0 0 0 0 0\n", "RWI 0: 0 0 0 0\n", 1}, // only this area does not move the bit number
        {"LW", "LW 0: 0 0 0 0 0\n", "LW 0: 0 0 0 0\n", 0},
        {"lb", "", "", 0},
        {"", "", "", 0},
        {"LWX", "", "", 0}};
    for (const auto& each : cases) {
        const std::string after = each.restored4 + std::string("LB 7: ") + (each.bitAfter4 ? "1\n" : "0\n");
        EXPECT_EQ(restored({blockAt(each.area, 0, 4), blockAt("LB", 7, 1)}), after);
        EXPECT_EQ(restored({blockAt(each.area, 0, 5), blockAt("LB", 7, 1)}),
                  each.restored5 + std::string("LB 7: 1\n"));
    }
}

TEST_F(RestoreOperations, TheHostsResultDoesNotMatter)
{
    openFiles(QByteArray::fromHex("06"), wordBytes("0100"), QByteArray(1, '\0'));
    for (const int result : {-1, 0, 1}) {
        comm.result = result;
        EXPECT_EQ(restored({blockAt("LW", 0, 1), blockAt("LB", 0, 2)}), "LW 0: 1\nLB 0: 1\nLB 1: 1\n");
    }
}

} // namespace
