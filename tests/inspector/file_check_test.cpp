// Tests the check of files against a project, and compares its prediction with the module's next start.
// SPDX-License-Identifier: MIT
#include "tests/inspector/report_of.h"
#include "tests/support/module_test.h"

#include <QtCore/QFile>

#include <sys/stat.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::vector<Entry> tenWordsTwelveBits = {{LW, 100, 10}, {LB, 20, 12}};

class FileCheckTest : public ModuleTest
{
protected:
    FileCheckTest()
    {
        writeRetentionFile(bitFileName, QByteArray("\xff\x0f", 2));
        writeRetentionFile(wordFileName, QByteArray(20, '\1'));
        writeRetentionFile(rwiFileName, QByteArray());
    }

    static Report check(object* project)
    {
        return reportOf("check", {makeLayout(readSettings(project))},
                        {openRetentionFiles(fixedProjectDirectory)});
    }

    static std::vector<std::string> kinds(object* project)
    {
        std::vector<std::string> result;
        for (const Finding& finding : check(project).findings)
            result.push_back(finding.area.toStdString() + ' ' + finding.kind);
        return result;
    }

    static std::string nextStart(object* project, std::size_t area)
    {
        return check(project).tables.front().rows[area].back().text.toStdString();
    }

    std::unique_ptr<object> project = perAddressProject(tenWordsTwelveBits);
    std::unique_ptr<object> images = wholeAreaProject(1, 5);
};

TEST_F(FileCheckTest, FindsNothingInFilesThatFit)
{
    EXPECT_THAT(kinds(project.get()), IsEmpty());
    EXPECT_EQ(nextStart(project.get(), 1), "restored");
    const auto panel = startPanel(project.get());
    EXPECT_EQ(panel->areas.named(LW)->cell(109), ushort(0x0101));
}

TEST_F(FileCheckTest, FindsMissingFilesAndKnowsThatTheyAreMade)
{
    QFile::remove(retentionPath(wordFileName));
    QFile::remove(retentionPath(rwiFileName));
    EXPECT_THAT(kinds(project.get()), ElementsAre("LW missing")) << "no RWI cell is retained";
    EXPECT_EQ(nextStart(project.get(), 1), "created with 20 zero bytes; LW keeps the panel's start values");
    startPanel(project.get());
    EXPECT_EQ(retentionFile(wordFileName), QByteArray(20, '\0'));
}

TEST_F(FileCheckTest, FindsEmptyFilesAndKnowsThatTheyStayEmpty)
{
    writeRetentionFile(bitFileName, QByteArray());
    EXPECT_THAT(kinds(project.get()), ElementsAre("LB empty"));
    EXPECT_EQ(nextStart(project.get(), 0), "left empty; LB keeps the panel's start values");
    startPanel(project.get());
    EXPECT_EQ(retentionFile(bitFileName), QByteArray());
}

TEST_F(FileCheckTest, FindsShorterAndLongerFiles)
{
    writeRetentionFile(wordFileName, QByteArray(17, '\1'));
    writeRetentionFile(rwiFileName, QByteArray(2, '\1'));
    const Report report = check(project.get());
    EXPECT_THAT(kinds(project.get()), ElementsAre("LW shorter", "RWI longer"));
    EXPECT_EQ(report.findings.front().cells.text(), "108 to 109");
}

TEST_F(FileCheckTest, SaysWhatComesBackOfAWordCutInHalf)
{
    writeRetentionFile(wordFileName, QByteArray("\1\0\2\0\x2a", 5));
    const Finding finding = check(project.get()).findings.front();
    EXPECT_EQ(finding.problem, "it has 5 bytes instead of 20: only the low byte of LW 102, "
                               "which therefore starts at 42; no value for LW 103 to 109.");
    EXPECT_EQ(finding.cells.text(), "102 to 109");
    const auto panel = startPanel(project.get());
    EXPECT_EQ(panel->areas.named(LW)->cell(102), ushort(42));
    EXPECT_EQ(panel->areas.named(LW)->cell(103), ushort(0));
}

TEST_F(FileCheckTest, FindsTheLengthOfTheOtherMode)
{
    writeRetentionFile(wordFileName, QByteArray(131072, '\1'));
    EXPECT_THAT(kinds(project.get()), ElementsAre("LW other-mode"));
    EXPECT_THAT(kinds(images.get()), ElementsAre("LB shorter", "RWI empty"));
    EXPECT_EQ(nextStart(images.get(), 0), "emptied and filled with zeros; all of LB starts at 0");
    startPanel(images.get());
    EXPECT_EQ(retentionFile(bitFileName), QByteArray(65536, '\0'));
    EXPECT_EQ(retentionFile(wordFileName), QByteArray(131072, '\1'));
}

TEST_F(FileCheckTest, FindsLongerImages)
{
    startPanel(images.get());
    EXPECT_THAT(kinds(images.get()), IsEmpty());
    writeRetentionFile(rwiFileName, QByteArray(131073, '\1'));
    EXPECT_THAT(kinds(images.get()), ElementsAre("RWI longer"));
}

TEST_F(FileCheckTest, FindsBitsAfterTheLastCell)
{
    writeRetentionFile(bitFileName, QByteArray("\xff\x1f", 2));
    EXPECT_THAT(kinds(project.get()), ElementsAre("LB bits-after-last-cell"));
}

TEST_F(FileCheckTest, FindsWhatIsNoFileWithoutWaitingForIt)
{
    QFile::remove(retentionPath(bitFileName));
    QFile::remove(retentionPath(wordFileName));
    ASSERT_EQ(mkfifo(retentionPath(bitFileName).toLatin1().constData(), 0600), 0);
    ASSERT_EQ(mkdir(retentionPath(wordFileName).toLatin1().constData(), 0700), 0);
    EXPECT_THAT(kinds(project.get()), ElementsAre("LB unreadable", "LW unreadable"));
    EXPECT_THAT(kinds(images.get()), ElementsAre("LB unreadable", "LW unreadable", "RWI empty"));
}

} // namespace
