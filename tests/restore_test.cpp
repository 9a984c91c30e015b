// The per-address start-up: missing files are made, existing ones are restored into the areas.
// SPDX-License-Identifier: MIT
#include "tests/support/module_test.h"
#include "tests/support/storage.h"

namespace {

const QString LB = QStringLiteral("LB");
const QString LW = QStringLiteral("LW");
const QString RWI = QStringLiteral("RWI");

/// The retention files that this process has open.
QStringList openFiles()
{
    QStringList names;
    const QFileInfoList descriptors =
        QDir(QStringLiteral("/proc/self/fd"))
            .entryInfoList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System);
    for (const QFileInfo& descriptor : descriptors) {
        const QString target = descriptor.symLinkTarget();
        if (target.startsWith(QLatin1String(fixedProjectDirectory)))
            names.append(target.section(QLatin1Char('/'), -1));
    }
    names.sort();
    return names;
}

QString wrote(const char* area, int address, const std::vector<int>& values)
{
    QStringList texts;
    for (const int value : values)
        texts.append(QString::number(value));
    return QStringLiteral("writeRegisterValues link=Local area=%1 address=%2 selector=-1 count=%3 data=%4")
        .arg(QLatin1String(area))
        .arg(address)
        .arg(values.size())
        .arg(texts.join(QLatin1String(",")));
}

class Restore : public ModuleTest
{
protected:
    /// Starts a panel that keeps these entries; what was written to the areas meanwhile.
    std::string restored(const std::vector<Entry>& entries)
    {
        project = perAddressProject(entries);
        panel = makePanel(project.get());
        calls.clear();
        panel->open();
        panel->init();
        EXPECT_EQ(syncs(), 0) << "a start-up syncs nothing";
        return lines(callsTo({QStringLiteral("writeRegisterValues"), QStringLiteral("readRegisterValues")}));
    }

    std::unique_ptr<object> project;
    std::unique_ptr<Panel> panel;
};

TEST_F(Restore, WithoutFilesMakesThemAndOpensAndWritesNothing)
{
    EXPECT_EQ(restored({{LB, 10, 13}, {LW, 100, 10}, {LW, 200, 5}, {RWI, 0, 3}}), "");
    EXPECT_EQ(retentionFile(bitFileName), QByteArray(2, '\0'));
    EXPECT_EQ(retentionFile(wordFileName), QByteArray(30, '\0'));
    EXPECT_EQ(retentionFile(rwiFileName), QByteArray(6, '\0'));
    EXPECT_TRUE(openFiles().isEmpty()) << lines(openFiles());
}

TEST_F(Restore, MakesOneByteTooManyForAMultipleOfEightBits)
{
    const struct
    {
        int bits;
        int bytes;
    } lengths[] = {{1, 1}, {7, 1}, {8, 2}, {9, 2}, {15, 2}, {16, 3}, {17, 3}};
    for (const auto& length : lengths) {
        QFile::remove(retentionPath(bitFileName));
        restored({{LB, 0, length.bits}});
        EXPECT_EQ(hex(retentionFile(bitFileName)), hex(QByteArray(length.bytes, '\0'))) << length.bits;
    }
}

TEST_F(Restore, MakesOneByteForNoBitsAndNoneForNoWords)
{
    restored({{QStringLiteral("none"), 0, 1}});
    EXPECT_EQ(retentionFile(bitFileName), QByteArray(1, '\0'));
    EXPECT_EQ(retentionFile(wordFileName), QByteArray(""));
    EXPECT_EQ(retentionFile(rwiFileName), QByteArray(""));
}

TEST_F(Restore, MakesFilesForTheFoldedBlocks)
{
    restored({{LW, 0, 4}, {LW, 2, 4}, {LB, 0, 10}, {LB, 4, 6}});
    EXPECT_EQ(retentionFile(wordFileName), QByteArray(10, '\0')) << "five words, not six";
    EXPECT_EQ(retentionFile(bitFileName), QByteArray(2, '\0')) << "nine bits, not ten";
}

TEST_F(Restore, NegativeCountsTakeFromTheLengthOfANewFile)
{
    restored({{LW, 0, -2}, {LW, 10, 5}, {LB, 0, -9}, {LB, 10, 8}, {RWI, 0, -4}});
    EXPECT_EQ(retentionFile(wordFileName), QByteArray(6, '\0'));
    EXPECT_EQ(retentionFile(bitFileName), QByteArray(1, '\0')) << "-1 / 8 + 1";
    EXPECT_EQ(retentionFile(rwiFileName), QByteArray("")) << "a negative length gives nothing";
}

TEST_F(Restore, LeavesEmptyFilesEmptyAndClosed)
{
    for (const char* name : {bitFileName, wordFileName, rwiFileName})
        writeRetentionFile(name, QByteArray());
    EXPECT_EQ(restored({{LB, 0, 3}, {LW, 0, 3}, {RWI, 0, 3}}), "");
    for (const char* name : {bitFileName, wordFileName, rwiFileName})
        EXPECT_EQ(retentionFile(name), QByteArray("")) << name;
    EXPECT_TRUE(openFiles().isEmpty()) << lines(openFiles());
    panel->areas.named(LW)->setCell(1, 7);
    panel->reportChange(LW, 1);
    EXPECT_EQ(hex(retentionFile(wordFileName)), "00 00 07 00 00 00") << "until the first change";
    EXPECT_EQ(lines(openFiles()), wordFileName);
}

TEST_F(Restore, OpensFilesThatHaveBytesAndKeepsThemOpenUntilTheModuleEnds)
{
    writeRetentionFile(bitFileName, QByteArray(1, '\0'));
    writeRetentionFile(rwiFileName, QByteArray(1, '\0'));
    restored({{LW, 0, 3}});
    EXPECT_EQ(openFiles(), QStringList({QString::fromLatin1(rwiFileName), QString::fromLatin1(bitFileName)}));
    panel.reset();
    EXPECT_TRUE(openFiles().isEmpty()) << lines(openFiles());
}

TEST_F(Restore, WritesEveryWordBlockInOneCallAndEveryBitInItsOwn)
{
    writeRetentionFile(bitFileName, QByteArray::fromHex("a500"));
    writeRetentionFile(wordFileName, QByteArray::fromHex("010002000300ffff"));
    writeRetentionFile(rwiFileName, QByteArray::fromHex("3412"));
    EXPECT_EQ(
        restored({{RWI, 9, 1}, {LW, 200, 2}, {LB, 100, 3}, {LW, 100, 2}, {LB, 200, 5}}),
        lines({wrote("LB", 100, {1}), wrote("LB", 101, {0}), wrote("LB", 102, {1}), wrote("LB", 200, {0}),
               wrote("LB", 201, {0}), wrote("LB", 202, {1}), wrote("LB", 203, {0}), wrote("LB", 204, {1}),
               wrote("LW", 100, {1, 2}), wrote("LW", 200, {3, 65535}), wrote("RWI", 9, {0x1234})}));
}

TEST_F(Restore, WritesNothingForTheBitsOfAZeroByte)
{
    writeRetentionFile(bitFileName, QByteArray::fromHex("000100"));
    EXPECT_EQ(restored({{LB, 0, 8}, {LB, 20, 3}, {LB, 30, 6}}),
              lines({wrote("LB", 20, {1}), wrote("LB", 21, {0}), wrote("LB", 22, {0}), wrote("LB", 30, {0}),
                     wrote("LB", 31, {0}), wrote("LB", 32, {0}), wrote("LB", 33, {0}), wrote("LB", 34, {0})}))
        << "bytes 0 and 2 are zero: 0 to 7 and 35 keep the host's values";
}

TEST_F(Restore, BitsOfAZeroByteKeepTheHostsStartValue)
{
    writeRetentionFile(bitFileName, QByteArray::fromHex("0001"));
    project = perAddressProject({{LB, 0, 16}});
    panel = makePanel(project.get());
    for (int address = 0; address < 16; ++address)
        panel->areas.named(LB)->setCell(address, 1);
    panel->start();
    EXPECT_EQ(panel->areas.named(LB)->cell(7), 1);
    EXPECT_EQ(panel->areas.named(LB)->cell(8), 1);
    EXPECT_EQ(panel->areas.named(LB)->cell(9), 0);
}

TEST_F(Restore, ABitBlockMayBeginOnAnyBit)
{
    for (int before = 1; before < 10; ++before) {
        QByteArray bytes(3, '\xff');
        bytes[before / 8] = static_cast<char>(0xff & ~(1 << (before % 8)));
        writeRetentionFile(bitFileName, bytes);
        const std::string got = restored({{LB, 0, before}, {LB, 50, 2}});
        EXPECT_THAT(got, testing::HasSubstr(lines({wrote("LB", 50, {0}), wrote("LB", 51, {1})}))) << before;
    }
}

TEST_F(Restore, WordsBehindTheEndOfAShortFileStartAtZero)
{
    writeRetentionFile(wordFileName, QByteArray::fromHex("010002000300"));
    EXPECT_EQ(restored({{LW, 0, 4}}), lines({wrote("LW", 0, {1, 2, 3, 0})})) << "one word short";
    writeRetentionFile(wordFileName, QByteArray::fromHex("0100020003"));
    EXPECT_EQ(restored({{LW, 0, 2}, {LW, 10, 2}, {LW, 20, 2}}),
              lines({wrote("LW", 0, {1, 2}), wrote("LW", 10, {3, 0}), wrote("LW", 20, {0, 0})}))
        << "half a word counts with its low byte";
    EXPECT_EQ(hex(retentionFile(wordFileName)), "01 00 02 00 03") << "the file keeps its length";
}

TEST_F(Restore, BitsBehindTheEndOfAShortFileAreLeftAlone)
{
    writeRetentionFile(bitFileName, QByteArray::fromHex("ff"));
    EXPECT_EQ(restored({{LB, 0, 6}, {LB, 10, 6}}),
              lines({wrote("LB", 0, {1}), wrote("LB", 1, {1}), wrote("LB", 2, {1}), wrote("LB", 3, {1}),
                     wrote("LB", 4, {1}), wrote("LB", 5, {1}), wrote("LB", 10, {1}), wrote("LB", 11, {1})}));
    EXPECT_EQ(hex(retentionFile(bitFileName)), "ff");
}

TEST_F(Restore, AfterAShortFileItsStreamStillWorks)
{
    writeRetentionFile(wordFileName, QByteArray("\x01"));
    writeRetentionFile(bitFileName, QByteArray("\x01"));
    restored({{LW, 0, 2}, {LB, 0, 20}});
    panel->areas.named(LW)->setCell(1, 0x0203);
    panel->reportChange(LW, 1);
    panel->areas.named(LB)->setCell(19, 1);
    panel->reportChange(LB, 19);
    EXPECT_EQ(hex(retentionFile(wordFileName)), "01 00 03 02");
    EXPECT_EQ(hex(retentionFile(bitFileName)), "01 00 08");
}

TEST_F(Restore, ALongerFileKeepsItsLength)
{
    writeRetentionFile(wordFileName, QByteArray(100, '\x01'));
    writeRetentionFile(bitFileName, QByteArray(100, '\0'));
    EXPECT_EQ(restored({{LW, 0, 1}, {LB, 0, 1}}), lines({wrote("LW", 0, {0x0101})}));
    EXPECT_EQ(retentionFile(wordFileName), QByteArray(100, '\x01'));
    EXPECT_EQ(retentionFile(bitFileName), QByteArray(100, '\0'));
}

TEST_F(Restore, BlocksWithoutCellsAreSkipped)
{
    writeRetentionFile(bitFileName, QByteArray::fromHex("03"));
    writeRetentionFile(wordFileName, QByteArray::fromHex("01000200"));
    EXPECT_EQ(restored({{LB, 0, 1}, {LB, 5, 0}, {LB, 9, 1}, {LW, 0, 1}, {LW, 5, 0}, {LW, 9, 1}}),
              lines({wrote("LB", 0, {1}), wrote("LB", 9, {1}), wrote("LW", 0, {1}), wrote("LW", 9, {2})}));
}

TEST_F(Restore, AWordBlockInFrontOfTheFileFailsTheStreamAndTheRestIsZero)
{
    writeRetentionFile(wordFileName, QByteArray(20, '\x01'));
    EXPECT_EQ(
        restored({{LW, 0, 1}, {LW, 10, -4}, {LW, 20, 1}, {LW, 30, 9}}),
        lines({wrote("LW", 0, {0x0101}), wrote("LW", 20, {0}), wrote("LW", 30, std::vector<int>(9, 0))}));
}

TEST_F(Restore, WithoutAProjectDirectoryLeavesTheAreasAlone)
{
    blockProjectDirectory();
    EXPECT_EQ(restored({{LB, 0, 8}, {LW, 0, 2}, {RWI, 0, 2}}), "");
    panel->reportChange(LW, 0);
    EXPECT_EQ(syncs(), 1) << "the module goes on";
    EXPECT_FALSE(QFileInfo(QLatin1String(fixedProjectDirectory)).isDir());
}

TEST_F(Restore, InAReadOnlyDirectoryMakesNothingAndZeroesTheWordsOfFilesThatItCannotOpen)
{
    NEEDS_A_MOUNT();
    mountOnProjectDirectory("size=1m");
    writeRetentionFile(bitFileName, QByteArray(1, '\xff'));
    writeRetentionFile(wordFileName, QByteArray(4, '\x11'));
    remountProjectDirectory("size=1m", MS_RDONLY);
    EXPECT_EQ(restored({{LB, 0, 3}, {LW, 0, 1}, {LW, 7, 1}, {RWI, 0, 2}}),
              lines({wrote("LW", 0, {0}), wrote("LW", 7, {0})}))
        << "bits are left alone, words start at 0, and a missing file restores nothing";
    EXPECT_EQ(retentionFile(rwiFileName), std::nullopt);
}

TEST_F(Restore, ADirectoryInAFilesPlaceIsLikeAFileThatCannotBeOpened)
{
    QDir().mkpath(retentionPath(bitFileName));
    QDir().mkpath(retentionPath(rwiFileName));
    writeRetentionFile(wordFileName, QByteArray::fromHex("0100"));
    EXPECT_EQ(restored({{LB, 0, 3}, {LW, 0, 1}, {RWI, 0, 2}}),
              lines({wrote("LW", 0, {1}), wrote("RWI", 0, {0, 0})}));
}

TEST_F(Restore, AFullDiskStillGetsItsNewFiles)
{
    NEEDS_A_MOUNT();
    mountOnProjectDirectory("size=4k");
    writeRetentionFile("filler.dat", QByteArray(4096, '\x11'));
    EXPECT_EQ(restored({{LB, 0, 8}, {LW, 0, 10}}), "");
    EXPECT_EQ(retentionFile(wordFileName), QByteArray(20, '\0')) << "a hole takes no room";
}

TEST_F(Restore, WithoutACommunicationInterfaceOpensTheFilesAndRestoresNothing)
{
    writeRetentionFile(wordFileName, QByteArray("\7\0", 2));
    project = perAddressProject({{LW, 0, 1}});
    const ModelPointer model = moduleLibrary().createModel();
    model->extModelOpen(project.get(), QString(), nullptr);
    model->extModelInit();
    EXPECT_EQ(openFiles(), QStringList(QString::fromLatin1(wordFileName)));
    EXPECT_EQ(retentionFile(wordFileName), QByteArray("\7\0", 2));
}

} // namespace
