// Tests the per-address start-up: missing files are created, existing ones are restored into the areas.
// SPDX-License-Identifier: MIT
#include "tests/support/module_test.h"
#include "tests/support/storage.h"
#include "tests/support/word_bytes.h"

#include <unistd.h>

namespace {

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
    /// Starts a panel that keeps these entries; returns what was written to the areas meanwhile.
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
    EXPECT_EQ(hex(retentionFile(wordFileName)), hex(wordBytes("000007000000"))) << "until the first change";
    EXPECT_EQ(syncs(), 1) << "which is counted";
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
    writeRetentionFile(wordFileName, wordBytes("010002000300ffff"));
    writeRetentionFile(rwiFileName, wordBytes("3412"));
    EXPECT_EQ(
        restored({{RWI, 9, 1}, {LW, 200, 2}, {LB, 100, 3}, {LW, 100, 2}, {LB, 200, 5}}),
        lines({wrote("LB", 100, {1}), wrote("LB", 101, {0}), wrote("LB", 102, {1}), wrote("LB", 200, {0}),
               wrote("LB", 201, {0}), wrote("LB", 202, {1}), wrote("LB", 203, {0}), wrote("LB", 204, {1}),
               wrote("LW", 100, {1, 2}), wrote("LW", 200, {3, 65535}), wrote("RWI", 9, {0x1234})}));
}

TEST_F(Restore, HalfAWordAtTheEndOfAFileComesBackWithItsLowByteAlone)
{
    writeRetentionFile(wordFileName, wordBytes("01000200ab"));
    EXPECT_EQ(restored({{LW, 0, 2}, {LW, 10, 2}, {LW, 20, 2}}),
              lines({wrote("LW", 0, {1, 2}), wrote("LW", 10, {wordIn("ab00"), 0}), wrote("LW", 20, {0, 0})}));
    EXPECT_EQ(hex(retentionFile(wordFileName)), hex(wordBytes("01000200ab"))) << "the file keeps its length";
}

TEST_F(Restore, WordsKeepTheirStartValuesWhereNobodyCanTellThatThereIsAFile)
{
    QDir().mkpath(QLatin1String(fixedProjectDirectory));
    const QByteArray path = retentionPath(QLatin1String(wordFileName)).toLatin1();
    ASSERT_EQ(symlink(path.constData(), path.constData()), 0);
    writeRetentionFile(rwiFileName, QByteArray::fromHex("3412"));
    EXPECT_EQ(restored({{LW, 0, 2}, {RWI, 9, 1}}), lines({wrote("RWI", 9, {0x1234})}))
        << "neither a look at it nor opening it succeeds";
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
