// Tests that the recorder sees everything done to the project directory, through any library.
// SPDX-License-Identifier: MIT
#include "tests/power_cut/disk_states/recorder.h"

#include "simulated_host/private_directory.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <fstream>
#include <sys/uio.h>
#include <unistd.h>

namespace {

using Kind = DiskOp::Kind;

const char* const path = "/usr/tavrin/project/file";

/// Runs `work` on the project directory `before`; the record must lead to what is there afterwards.
template <typename Work> std::vector<DiskOp> recordOf(const DiskImage& before, Work work)
{
    writeProjectDirectory(before);
    std::vector<DiskOp> ops;
    Recorder recorder([&](const DiskOp& op) { ops.push_back(op); });
    work();
    Disk disk = recorder.initialDisk();
    for (const DiskOp& op : ops)
        disk.apply(op);
    const DiskImage found = readProjectDirectory();
    EXPECT_EQ(disk.image().directory, found.directory);
    EXPECT_EQ(disk.image().files, found.files);
    return ops;
}

std::vector<Kind> kindsOf(const std::vector<DiskOp>& ops)
{
    std::vector<Kind> kinds;
    for (const DiskOp& op : ops)
        kinds.push_back(op.kind);
    return kinds;
}

const DiskImage emptyDirectory = {true, {}};
const DiskImage oneFile = {true, {{QStringLiteral("file"), "0123456789"}}};

TEST(Recorder, SeesADirectoryAndAFileBeingMade)
{
    const auto ops = recordOf({}, [] {
        QDir().mkpath(QLatin1String(fixedProjectDirectory));
        QFile file(QString::fromLatin1(path));
        file.open(QIODevice::WriteOnly);
        file.resize(7);
    });
    EXPECT_EQ(kindsOf(ops), (std::vector<Kind>{Kind::MakeDirectory, Kind::Make, Kind::SetLength}));
}

TEST(Recorder, SeesAStreamsBytesWhenTheyLeaveItsBuffer)
{
    const auto ops = recordOf(oneFile, [] {
        std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(4);
        file.write("ab", 2);
        EXPECT_EQ(readProjectDirectory().files, oneFile.files);
        file.flush();
    });
    ASSERT_EQ(ops.size(), 1U);
    EXPECT_EQ(ops.front().offset, 4);
    EXPECT_EQ(ops.front().bytes, "ab");
}

TEST(Recorder, SeesWritesPastTheEndAndAtPositions)
{
    recordOf(oneFile, [] {
        const int file = open(path, O_RDWR);
        EXPECT_EQ(pwrite(file, "end", 3, 20), 3);
        char bytes[] = "gathered";
        const iovec parts[] = {{bytes, 4}, {bytes + 4, 4}};
        EXPECT_EQ(writev(file, parts, 2), 8);
        EXPECT_EQ(write(file, "!", 1), 1);
        close(file);
        const int appending = open(path, O_WRONLY | O_APPEND);
        EXPECT_EQ(write(appending, "appended", 8), 8);
        close(appending);
    });
}

TEST(Recorder, SeesFilesBeingEmptiedCutRenamedAndRemoved)
{
    const auto emptied = recordOf(oneFile, [] { close(open(path, O_WRONLY | O_TRUNC)); });
    EXPECT_EQ(kindsOf(emptied), (std::vector<Kind>{Kind::SetLength}));
    const auto cut = recordOf(oneFile, [] { EXPECT_EQ(truncate(path, 3), 0); });
    EXPECT_EQ(kindsOf(cut), (std::vector<Kind>{Kind::SetLength}));
    const auto removed = recordOf(oneFile, [] { EXPECT_EQ(unlink(path), 0); });
    EXPECT_EQ(kindsOf(removed), (std::vector<Kind>{Kind::Remove}));
    const auto renamed = recordOf(oneFile, [] {
        QFile file(QLatin1String(fixedProjectDirectory) + QLatin1String("/new"));
        file.open(QIODevice::WriteOnly);
        file.write("new");
        file.close();
        EXPECT_EQ(rename(file.fileName().toLocal8Bit().constData(), path), 0);
    });
    EXPECT_EQ(kindsOf(renamed), (std::vector<Kind>{Kind::Make, Kind::GrowTo, Kind::Data, Kind::Rename}));
}

TEST(Recorder, SeesFilesAndTheDirectoryBeingSynchronised)
{
    const auto ops = recordOf(oneFile, [] {
        const int file = open(path, O_RDWR);
        EXPECT_EQ(fsync(file), 0);
        EXPECT_EQ(fdatasync(file), 0);
        close(file);
        const int directory = open(fixedProjectDirectory, O_RDONLY | O_DIRECTORY);
        EXPECT_EQ(fsync(directory), 0);
        close(directory);
        const int elsewhere = open("/usr/tavrin", O_RDONLY | O_DIRECTORY);
        EXPECT_EQ(fsync(elsewhere), 0);
        close(elsewhere);
    });
    EXPECT_EQ(kindsOf(ops), (std::vector<Kind>{Kind::SyncFile, Kind::SyncFile, Kind::SyncNames}));
}

TEST(Recorder, TakesNoNoticeOfOtherFiles)
{
    for (const char* const elsewhere : {"/usr/tavrin/elsewhere", "/usr/tavrin/project.dat"})
        EXPECT_TRUE(recordOf(emptyDirectory,
                             [&] {
                                 QFile file(QString::fromLatin1(elsewhere));
                                 EXPECT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
                                 EXPECT_EQ(file.write("bytes"), 5);
                             })
                        .empty())
            << elsewhere;
}

} // namespace
