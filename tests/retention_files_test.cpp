// Opening, positioned reading and positioned writing: what is in the file and what state the stream is in.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/poweroff_protect.h"
#include "tests/support/module_test.h"
#include "tests/support/storage.h"

#include <fstream>

namespace {

constexpr std::ios_base::iostate good = std::ios_base::goodbit;

class RetentionFiles : public ModuleTest
{
protected:
    void write(const QByteArray& bytes, int offset)
    {
        QByteArray buffer = bytes;
        model.writeFile(file, buffer.data(), buffer.size(), offset);
    }

    /// What a buffer full of "77" bytes holds after the reading.
    std::string read(int length, int offset)
    {
        QByteArray buffer(length, '\x77');
        model.readFile(file, buffer.data(), length, offset);
        return hex(buffer);
    }

    /// A stream on a file with these bytes.
    void openOn(const QByteArray& bytes)
    {
        writeRetentionFile(fileName, bytes);
        model.checkFile(file, fileName);
        ASSERT_TRUE(file.is_open());
    }

    static constexpr const char* fileName = "maintenance-word.dat";
    poweroff_protect model;
    std::fstream file;
};

TEST_F(RetentionFiles, CheckingOpensAnExistingFileWithoutChangingIt)
{
    writeRetentionFile(fileName, QByteArray::fromHex("010203"));
    model.checkFile(file, fileName);
    EXPECT_TRUE(file.is_open());
    EXPECT_EQ(file.rdstate(), good);
    EXPECT_EQ(hex(retentionFile(fileName)), "01 02 03");
    EXPECT_EQ(read(3, 0), "01 02 03");
    write(QByteArray::fromHex("ff"), 1);
    EXPECT_EQ(hex(retentionFile(fileName)), "01 ff 03");
}

TEST_F(RetentionFiles, CheckingOpensAnEmptyFileToo)
{
    openOn(QByteArray());
    EXPECT_EQ(file.rdstate(), good);
}

TEST_F(RetentionFiles, CheckingMakesNoFileAndFailsTheStream)
{
    model.checkFile(file, fileName);
    EXPECT_FALSE(file.is_open());
    EXPECT_EQ(file.rdstate(), std::ios_base::failbit);
    EXPECT_EQ(retentionFile(fileName), std::nullopt);
}

TEST_F(RetentionFiles, CheckingTriesAgainAndClearsTheStateOnSuccess)
{
    model.checkFile(file, fileName);
    ASSERT_TRUE(file.fail());
    writeRetentionFile(fileName, QByteArray(1, '\x11'));
    model.checkFile(file, fileName);
    EXPECT_TRUE(file.is_open());
    EXPECT_EQ(file.rdstate(), good);
    EXPECT_EQ(read(1, 0), "11");
}

TEST_F(RetentionFiles, CheckingClearsEveryBitOfAClosedStreamOnSuccess)
{
    writeRetentionFile(fileName, QByteArray(1, '\x11'));
    file.setstate(std::ios_base::failbit | std::ios_base::badbit | std::ios_base::eofbit);
    model.checkFile(file, fileName);
    EXPECT_EQ(file.rdstate(), good);
}

TEST_F(RetentionFiles, CheckingAnOpenStreamLeavesItAsItIsErrorsIncluded)
{
    openOn(QByteArray(2, '\x11'));
    for (const auto state : {std::ios_base::failbit, std::ios_base::badbit, std::ios_base::eofbit}) {
        file.clear(state);
        model.checkFile(file, fileName);
        EXPECT_EQ(file.rdstate(), state);
        EXPECT_TRUE(file.is_open());
    }
}

TEST_F(RetentionFiles, CheckingAnOpenStreamDoesNotReopenIt)
{
    openOn(QByteArray(2, '\x11'));
    writeRetentionFile("other.dat", QByteArray(2, '\x22'));
    model.checkFile(file, "other.dat");
    EXPECT_EQ(read(2, 0), "11 11");
    ASSERT_TRUE(QFile::remove(retentionPath(fileName)));
    model.checkFile(file, fileName);
    EXPECT_EQ(file.rdstate(), good);
    EXPECT_EQ(read(2, 0), "11 11");
}

TEST_F(RetentionFiles, CheckingADirectoryFails)
{
    QDir().mkpath(retentionPath(fileName));
    model.checkFile(file, fileName);
    EXPECT_FALSE(file.is_open());
    EXPECT_TRUE(file.fail());
}

TEST_F(RetentionFiles, CheckingFailsOnAReadOnlyFileSystem)
{
    NEEDS_A_MOUNT();
    mountOnProjectDirectory("size=1m");
    writeRetentionFile(fileName, QByteArray(2, '\x11'));
    remountProjectDirectory("size=1m", MS_RDONLY);
    model.checkFile(file, fileName);
    EXPECT_FALSE(file.is_open());
    EXPECT_EQ(file.rdstate(), std::ios_base::failbit);
}

TEST_F(RetentionFiles, CheckingFailsWithoutAProjectDirectoryAndMakesNone)
{
    removeDirectory(QLatin1String(fixedProjectDirectory));
    model.checkFile(file, fileName);
    EXPECT_TRUE(file.fail());
    EXPECT_FALSE(QDir(QLatin1String(fixedProjectDirectory)).exists());
}

TEST_F(RetentionFiles, ReadingTakesTheBytesAtTheOffset)
{
    openOn(QByteArray::fromHex("0001020304050607"));
    EXPECT_EQ(read(3, 2), "02 03 04");
    EXPECT_EQ(read(1, 7), "07");
    EXPECT_EQ(read(8, 0), "00 01 02 03 04 05 06 07") << "up to the very end is not past it";
    EXPECT_EQ(file.rdstate(), good);
}

TEST_F(RetentionFiles, ReadingPastTheEndKeepsTheRestOfTheBufferAndLeavesAGoodStream)
{
    openOn(QByteArray::fromHex("000102"));
    EXPECT_EQ(read(4, 1), "01 02 77 77");
    EXPECT_EQ(file.rdstate(), good);
    EXPECT_EQ(read(1, 0), "00") << "and it reads again";
}

TEST_F(RetentionFiles, ReadingBeyondTheEndLeavesTheBufferAndAGoodStream)
{
    openOn(QByteArray::fromHex("000102"));
    for (const int offset : {3, 4, 100000, std::numeric_limits<int>::max()}) {
        EXPECT_EQ(read(2, offset), "77 77") << offset;
        EXPECT_EQ(file.rdstate(), good) << offset;
    }
}

TEST_F(RetentionFiles, ReadingAnEmptyFileLeavesTheBufferAndAGoodStream)
{
    openOn(QByteArray());
    EXPECT_EQ(read(2, 0), "77 77");
    EXPECT_EQ(file.rdstate(), good);
}

TEST_F(RetentionFiles, ReadingAClosedStreamLeavesItFailed)
{
    EXPECT_EQ(read(2, 0), "77 77");
    EXPECT_EQ(file.rdstate() & (std::ios_base::failbit | std::ios_base::eofbit), std::ios_base::failbit);
}

TEST_F(RetentionFiles, ReadingAFailedStreamLeavesItFailedAndTheBufferAlone)
{
    openOn(QByteArray(4, '\x11'));
    file.setstate(std::ios_base::failbit);
    EXPECT_EQ(read(2, 0), "77 77");
    EXPECT_TRUE(file.fail());
    file.clear(std::ios_base::badbit);
    EXPECT_EQ(read(2, 0), "77 77");
    EXPECT_TRUE(file.bad());
}

TEST_F(RetentionFiles, ReadingInFrontOfTheFileFailsTheStreamForGood)
{
    openOn(QByteArray(4, '\x11'));
    EXPECT_EQ(read(2, -1), "77 77");
    EXPECT_TRUE(file.fail());
    EXPECT_FALSE(file.eof());
    EXPECT_EQ(read(2, 0), "77 77");
    EXPECT_TRUE(file.fail());
}

TEST_F(RetentionFiles, ReadingSeesWhatOthersWroteMeanwhile)
{
    openOn(QByteArray(4, '\x11'));
    EXPECT_EQ(read(4, 0), "11 11 11 11");
    writeRetentionFile(fileName, QByteArray(4, '\x22'));
    EXPECT_EQ(read(4, 0), "22 22 22 22");
}

TEST_F(RetentionFiles, WritingIsInTheFileWhenTheCallReturns)
{
    openOn(QByteArray(4, '\0'));
    write(QByteArray::fromHex("aabb"), 1);
    EXPECT_EQ(hex(retentionFile(fileName)), "00 aa bb 00");
    write(QByteArray::fromHex("cc"), 3);
    EXPECT_EQ(hex(retentionFile(fileName)), "00 aa bb cc");
    write(QByteArray::fromHex("dd"), 0);
    EXPECT_EQ(hex(retentionFile(fileName)), "dd aa bb cc");
    EXPECT_EQ(file.rdstate(), good);
}

TEST_F(RetentionFiles, WritingPastTheEndMakesTheFileLonger)
{
    openOn(QByteArray(2, '\x11'));
    write(QByteArray::fromHex("aabbcc"), 1);
    EXPECT_EQ(hex(retentionFile(fileName)), "11 aa bb cc");
    write(QByteArray::fromHex("dd"), 7);
    EXPECT_EQ(hex(retentionFile(fileName)), "11 aa bb cc 00 00 00 dd");
}

TEST_F(RetentionFiles, WritingAndReadingTakeTurns)
{
    openOn(QByteArray(4, '\x11'));
    for (int round = 0; round < 4; ++round) {
        write(QByteArray(1, static_cast<char>(0xa0 + round)), round);
        EXPECT_EQ(read(1, round), hex(QByteArray(1, static_cast<char>(0xa0 + round))));
        EXPECT_EQ(read(2, 3), round < 3 ? "11 77" : "a3 77");
    }
    EXPECT_EQ(file.rdstate(), good);
}

TEST_F(RetentionFiles, WritingAClosedStreamLeavesItFailed)
{
    writeRetentionFile(fileName, QByteArray(2, '\x11'));
    write(QByteArray::fromHex("aa"), 0);
    EXPECT_TRUE(file.fail());
    EXPECT_FALSE(file.is_open());
    EXPECT_EQ(hex(retentionFile(fileName)), "11 11");
}

TEST_F(RetentionFiles, WritingNeitherChecksNorClearsTheState)
{
    openOn(QByteArray(2, '\x11'));
    file.setstate(std::ios_base::failbit);
    write(QByteArray::fromHex("aa"), 0);
    EXPECT_TRUE(file.fail());
    EXPECT_EQ(hex(retentionFile(fileName)), "11 11");
    file.clear();
    write(QByteArray::fromHex("aa"), 0);
    EXPECT_EQ(hex(retentionFile(fileName)), "aa 11");
}

TEST_F(RetentionFiles, WritingInFrontOfTheFileFailsTheStream)
{
    openOn(QByteArray(2, '\x11'));
    write(QByteArray::fromHex("aa"), -2);
    EXPECT_TRUE(file.fail());
    EXPECT_EQ(hex(retentionFile(fileName)), "11 11");
}

TEST_F(RetentionFiles, WritingToAFullDiskFailsTheStreamAndCheckingDoesNotMendIt)
{
    NEEDS_A_MOUNT();
    mountOnProjectDirectory("size=4k");
    openOn(QByteArray());
    write(QByteArray(4096, '\x22'), 0);
    ASSERT_EQ(file.rdstate(), good);
    write(QByteArray(1, '\x33'), 4096);
    EXPECT_TRUE(file.fail());
    remountProjectDirectory("size=1m");
    model.checkFile(file, fileName);
    EXPECT_TRUE(file.fail());
    write(QByteArray(1, '\x33'), 0);
    EXPECT_EQ(retentionFile(fileName), QByteArray(4096, '\x22'));
    EXPECT_EQ(read(1, 0), "77") << "nor does it read any more";
}

} // namespace
