// Tests that every library of the process sees the mapped directory under the fixed name, and that nothing
// else moves.
// SPDX-License-Identifier: MIT
#include "simulated_host/file_calls/path_mapping.h"
#include "simulated_host/remove_directory.h"

#include <QtCore/QDir>
#include <QtCore/QDirIterator>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QTemporaryDir>

#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const QString mapped = QStringLiteral("/usr/mapped_by_test");

/// A directory that appears at /usr/mapped_by_test.
class PathMapping : public testing::Test
{
protected:
    PathMapping() { EXPECT_TRUE(mapPath("/usr/mapped_by_test", scratch.path().toLocal8Bit().constData())); }

    QByteArray bytesOf(const char* name) const
    {
        QFile file(scratch.filePath(QLatin1String(name)));
        file.open(QIODevice::ReadOnly);
        return file.readAll();
    }

    const QTemporaryDir scratch;
};

TEST_F(PathMapping, HoldsForTheStreamsOfTheCppLibrary)
{
    std::ofstream("/usr/mapped_by_test/stream") << "text";
    EXPECT_EQ(bytesOf("stream"), "text");
    std::string text;
    std::ifstream("/usr/mapped_by_test/stream") >> text;
    EXPECT_EQ(text, "text");
    EXPECT_EQ(std::filesystem::file_size("/usr/mapped_by_test/stream"), 4U);
    std::filesystem::resize_file("/usr/mapped_by_test/stream", 2);
    EXPECT_EQ(bytesOf("stream"), "te");
}

TEST_F(PathMapping, HoldsForQt)
{
    EXPECT_TRUE(QDir().mkpath(mapped + QStringLiteral("/folder/below")));
    EXPECT_TRUE(QFileInfo(scratch.filePath(QStringLiteral("folder/below"))).isDir());
    QFile file(mapped + QStringLiteral("/folder/file"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_TRUE(file.resize(7));
    file.close();
    EXPECT_EQ(QFileInfo(file.fileName()).size(), 7);
    EXPECT_TRUE(QFile::resize(file.fileName(), 3));
    EXPECT_EQ(bytesOf("folder/file").size(), 3);
    EXPECT_TRUE(QFile::copy(file.fileName(), mapped + QStringLiteral("/copy")));
    EXPECT_TRUE(QFile::rename(mapped + QStringLiteral("/copy"), mapped + QStringLiteral("/moved")));
    EXPECT_EQ(QDir(mapped).entryList(QDir::Files), QStringList(QStringLiteral("moved")));
    EXPECT_EQ(QFileInfo(mapped).canonicalFilePath(), mapped);
    EXPECT_TRUE(removeDirectory(mapped + QStringLiteral("/folder")));
    EXPECT_EQ(QDir(scratch.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
              QStringList(QStringLiteral("moved")));
}

TEST_F(PathMapping, HoldsForTheCLibrary)
{
    EXPECT_EQ(mkdir("/usr/mapped_by_test/folder", 0700), 0);
    FILE* const stream = fopen("/usr/mapped_by_test/folder/file", "w");
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(fclose(stream), 0);
    EXPECT_EQ(access("/usr/mapped_by_test/folder/file", W_OK), 0);
    EXPECT_EQ(truncate("/usr/mapped_by_test/folder/file", 5), 0);
    struct stat status;
    EXPECT_EQ(stat("/usr/mapped_by_test/folder/file", &status), 0);
    EXPECT_EQ(status.st_size, 5);
    EXPECT_EQ(chmod("/usr/mapped_by_test/folder/file", 0400), 0);
    EXPECT_EQ(rename("/usr/mapped_by_test/folder/file", "/usr/mapped_by_test/folder/other"), 0);
    EXPECT_EQ(lstat("/usr/mapped_by_test/folder/other", &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0400U);
    EXPECT_EQ(unlink("/usr/mapped_by_test/folder/other"), 0);
    EXPECT_EQ(rmdir("/usr/mapped_by_test/folder"), 0);
    EXPECT_TRUE(std::filesystem::is_empty(qPrintable(scratch.path())));
}

TEST_F(PathMapping, LeadsLinksToWhatTheyName)
{
    std::ofstream("/usr/mapped_by_test/file") << "text";
    ASSERT_EQ(symlink("/usr/mapped_by_test/file", "/usr/mapped_by_test/link"), 0);
    std::string text;
    std::ifstream("/usr/mapped_by_test/link") >> text;
    EXPECT_EQ(text, "text");
    char target[PATH_MAX] = {};
    EXPECT_EQ(readlink("/usr/mapped_by_test/link", target, sizeof target), 24);
    EXPECT_STREQ(target, "/usr/mapped_by_test/file");
    EXPECT_EQ(realpath("/usr/mapped_by_test/link", target), target);
    EXPECT_STREQ(target, "/usr/mapped_by_test/file");
}

TEST_F(PathMapping, KnowsTheDirectoryInEverySpelling)
{
    std::ofstream("/usr/mapped_by_test/file") << "text";
    for (const char* const spelling :
         {"/usr/mapped_by_test/file", "//usr/./mapped_by_test//file", "/usr/lib/../mapped_by_test/x/../file"})
        EXPECT_EQ(access(spelling, R_OK), 0) << spelling;
    EXPECT_EQ(access("/usr/mapped_by_test/", X_OK), 0);
    EXPECT_NE(access("/usr/mapped_by_test/file/", R_OK), 0) << "a file is no directory";
}

TEST_F(PathMapping, LeavesOtherPathsAlone)
{
    // A mapping that compared only the text of the path would map this one.
    const QString beside = scratch.path() + QLatin1String("_too");
    ASSERT_TRUE(QDir().mkdir(beside));
    EXPECT_NE(access("/usr/mapped_by_test_too", F_OK), 0);
    EXPECT_TRUE(QDir().rmdir(beside));
    EXPECT_NE(access("/usr/mapped_by", F_OK), 0);
    EXPECT_EQ(access("/usr/lib", F_OK), 0);
    EXPECT_EQ(QFileInfo(scratch.path()).canonicalPath(), QDir::tempPath());
    EXPECT_EQ(open(std::string(PATH_MAX + 1, '/').c_str(), O_RDONLY), -1);
    EXPECT_EQ(errno, ENAMETOOLONG);
}

TEST_F(PathMapping, PrefersTheMappingOfTheLongerPath)
{
    const QTemporaryDir inner;
    ASSERT_TRUE(mapPath("/usr/mapped_by_test/inner", inner.path().toLocal8Bit().constData()));
    std::ofstream("/usr/mapped_by_test/inner/file") << "text";
    EXPECT_TRUE(QFile::exists(inner.filePath(QStringLiteral("file"))));
    EXPECT_TRUE(std::filesystem::is_empty(qPrintable(scratch.path())));
}

} // namespace
