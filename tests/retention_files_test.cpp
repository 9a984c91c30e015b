// Tests opening, positioned reading and positioned writing: the contents of the file and the state of the
// stream.
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

TEST_F(RetentionFiles, CheckingMakesNoFileAndFailsTheStream)
{
    model.checkFile(file, fileName);
    EXPECT_FALSE(file.is_open());
    EXPECT_EQ(file.rdstate(), std::ios_base::failbit);
    EXPECT_EQ(retentionFile(fileName), std::nullopt);
    EXPECT_EQ(read(2, 0), "77 77");
    EXPECT_EQ(file.rdstate() & (std::ios_base::failbit | std::ios_base::eofbit), std::ios_base::failbit);
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

TEST_F(RetentionFiles, ReadingTakesWhatThereIsAtTheOffsetAndLeavesAGoodStream)
{
    openOn(QByteArray::fromHex("000102"));
    const struct
    {
        int length, offset;
        const char* bytes;
    } cases[] = {{2, 1, "01 02"}, {3, 0, "00 01 02"}, {4, 1, "01 02 77 77"},
                 {2, 3, "77 77"}, {1, 0, "00"},       {2, std::numeric_limits<int>::max(), "77 77"}};
    for (const auto& each : cases) {
        EXPECT_EQ(read(each.length, each.offset), each.bytes) << each.offset;
        EXPECT_EQ(file.rdstate(), good) << each.offset;
    }
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

TEST_F(RetentionFiles, WritingIsInTheFileWhenTheCallReturns)
{
    openOn(QByteArray(4, '\0'));
    write(QByteArray::fromHex("aabb"), 1);
    EXPECT_EQ(hex(retentionFile(fileName)), "00 aa bb 00");
    write(QByteArray::fromHex("cc"), 3);
    EXPECT_EQ(hex(retentionFile(fileName)), "00 aa bb cc");
    write(QByteArray::fromHex("dd"), 0);
    EXPECT_EQ(hex(retentionFile(fileName)), "dd aa bb cc");
    write(QByteArray::fromHex("ee"), 7);
    EXPECT_EQ(hex(retentionFile(fileName)), "dd aa bb cc 00 00 00 ee");
    EXPECT_EQ(file.rdstate(), good);
}

TEST_F(RetentionFiles, WritingAndReadingNeitherCheckNorClearTheState)
{
    openOn(QByteArray(2, '\x11'));
    file.setstate(std::ios_base::failbit);
    write(QByteArray::fromHex("aa"), 0);
    EXPECT_EQ(read(2, 0), "77 77");
    EXPECT_TRUE(file.fail());
    EXPECT_EQ(hex(retentionFile(fileName)), "11 11");
    file.clear();
    write(QByteArray::fromHex("aa"), 0);
    EXPECT_EQ(hex(retentionFile(fileName)), "aa 11");
}

} // namespace
