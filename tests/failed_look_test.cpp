// Fails looks at the files: what is not known to be missing or too short is neither created nor emptied.
// SPDX-License-Identifier: MIT
#include "tests/support/module_test.h"

#include <QtCore/QFile>

#include <cerrno>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

int lookError = 0; ///< errno of every look at a retention file; 0 lets looks through
int failedLooks = 0;

/// Whether the look at `path` is to fail, with errno set.
bool failsLook(const char* path)
{
    if (lookError == 0 || !path || !std::strstr(path, "/maintenance-"))
        return false;
    ++failedLooks;
    errno = lookError;
    return true;
}

} // namespace

// The module and QtCore look through these, whichever the C library offers them.
extern "C" {
int stat64(const char* path, struct stat64* found) noexcept
{
    return failsLook(path) ? -1 : fstatat64(AT_FDCWD, path, found, 0);
}

int statx(int folder, const char* path, int flags, unsigned mask, struct statx* found) noexcept
{
    return failsLook(path) ? -1 : static_cast<int>(syscall(SYS_statx, folder, path, flags, mask, found));
}
}

namespace {

class FailedLook : public ModuleTest, public testing::WithParamInterface<int>
{
protected:
    /// One start of a panel whose looks at the files fail.
    std::unique_ptr<Panel> startBlind(object* project)
    {
        failedLooks = 0;
        lookError = GetParam();
        std::unique_ptr<Panel> panel = startPanel(project);
        lookError = 0;
        EXPECT_GE(failedLooks, 3) << "the module looks in a way that this test does not reach";
        return panel;
    }
};

TEST_P(FailedLook, LeavesKeptFilesOfThePerAddressModeAndRestoresThem)
{
    const auto project = perAddressProject({{QStringLiteral("LW"), 100, 2}, {QStringLiteral("LB"), 8, 8}});
    writeRetentionFile(wordFileName, QByteArray("\1\2\3\4", 4));
    writeRetentionFile(bitFileName, QByteArray("\x81\0", 2));
    const auto panel = startBlind(project.get());
    EXPECT_EQ(retentionFile(wordFileName), QByteArray("\1\2\3\4", 4));
    EXPECT_EQ(retentionFile(bitFileName), QByteArray("\x81\0", 2));
    EXPECT_EQ(panel->areas.named(QStringLiteral("LW"))->cell(101), 0x0403);
    EXPECT_EQ(panel->areas.named(QStringLiteral("LB"))->cell(15), 1);
}

TEST_P(FailedLook, LeavesKeptFilesOfTheWholeAreaModeAndRestoresThem)
{
    const auto project = wholeAreaProject(1, 5);
    writeRetentionFile(wordFileName, QByteArray(131072, '\5'));
    writeRetentionFile(bitFileName, QByteArray(65536, '\1'));
    writeRetentionFile(rwiFileName, QByteArray(100, '\7'));
    const auto panel = startBlind(project.get());
    EXPECT_EQ(retentionFile(wordFileName), QByteArray(131072, '\5'));
    EXPECT_EQ(retentionFile(bitFileName), QByteArray(65536, '\1'));
    EXPECT_EQ(retentionFile(rwiFileName), QByteArray(100, '\7')) << "too short, but that is not known";
    EXPECT_EQ(panel->areas.named(QStringLiteral("LW"))->cell(7), 0x0505);
}

TEST_P(FailedLook, CreatesNoFile)
{
    for (const auto& project :
         {perAddressProject({{QStringLiteral("LW"), 100, 2}}), wholeAreaProject(1, 5)}) {
        startBlind(project.get());
        EXPECT_FALSE(QFile::exists(retentionPath(wordFileName)));
    }
}

INSTANTIATE_TEST_SUITE_P(With, FailedLook, testing::Values(EIO, EACCES, ENOMEM, EINTR, EOVERFLOW),
                         [](const auto& info) { return "Errno" + std::to_string(info.param); });

} // namespace
