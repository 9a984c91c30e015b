// Tests word blocks too large for memory: they are left alone, and everything else goes on.
// SPDX-License-Identifier: MIT
#include "tests/support/module_test.h"
#include "tests/support/storage.h"
#include "tests/support/word_bytes.h"

#include <cstdlib>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__)
/// AddressSanitizer does not allow limiting the address space, but can limit the size of one allocation.
extern "C" const char* __asan_default_options()
{
    return "allocator_may_return_null=1:max_allocation_size_mb=256";
}
#endif

namespace {

constexpr int hugeCount = 400 * 1000 * 1000; // 800 MB of values
constexpr int behindHuge = 100 + hugeCount;

/// Limits this process to a quarter of a gigabyte more than it has.
void limitMemory()
{
#if !defined(__SANITIZE_ADDRESS__)
    QFile statm(QStringLiteral("/proc/self/statm"));
    ASSERT_TRUE(statm.open(QIODevice::ReadOnly));
    const auto pages = static_cast<rlim_t>(statm.readAll().split(' ').value(0).toULongLong());
    const rlim_t bytes = pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + (256U << 20);
    const rlimit limit = {bytes, bytes};
    ASSERT_EQ(setrlimit(RLIMIT_AS, &limit), 0);
#endif
}

/// False where the limit has no effect, as in an emulator.
bool memoryCanBeLimited()
{
    const pid_t child = fork();
    if (child == 0) {
        limitMemory();
        void* volatile memory = std::malloc(2U * hugeCount);
        _exit(memory ? 1 : 0);
    }
    int status = 0;
    return waitpid(child, &status, 0) == child && status == 0;
}

std::string wrote(const char* area, int address, int count, const char* values)
{
    return QStringLiteral("writeRegisterValues link=Local area=%1 address=%2 selector=-1 count=%3 data=%4")
        .arg(QLatin1String(area), QString::number(address), QString::number(count), QLatin1String(values))
        .toStdString();
}

class UnallocatableBlock : public ModuleTest
{
protected:
    std::string change(const QString& area, int address, ushort value)
    {
        panel->areas.named(area)->setCell(address, value);
        calls.clear();
        panel->reportChange(area, address);
        return lines(calls);
    }

    void live()
    {
        panel = makePanel(project.get());
        calls.clear();
        panel->open();
        panel->init();
        EXPECT_EQ(lines(callsTo({QStringLiteral("writeRegisterValues")})),
                  wrote("LW", 0, 2, "1,2") + '\n' + wrote("LW", behindHuge, 2, "4,5") + '\n' +
                      wrote("RWI", 0, 1, "3"));
        EXPECT_THAT(change(LW, 1, 0x0102), testing::MatchesRegex("readRegisterValues .*\nsync"));
        EXPECT_EQ(change(LW, 150, 0x0304), "sync") << "nothing is read for it";
        change(RWI, 0, 0x0506);
        EXPECT_EQ(hex(retentionFile(rwiFileName)), hex(wordBytes("0605")));
        QFile words(retentionPath(wordFileName));
        ASSERT_TRUE(words.open(QIODevice::ReadOnly));
        EXPECT_EQ(hex(words.read(8)), hex(wordBytes("0100020100000000")));
        EXPECT_EQ(words.size(), 4 + 2LL * hugeCount + 4);
#if !defined(__SANITIZE_ADDRESS__) // which does not limit many small records
        EXPECT_THAT(watchedCells(*panel->model),
                    testing::ElementsAre("LW 0", "LW 1", "LW " + std::to_string(behindHuge),
                                         "LW " + std::to_string(behindHuge + 1), "RWI 0"));
#endif
    }

    std::unique_ptr<object> project;
    std::unique_ptr<Panel> panel;
};

TEST_F(UnallocatableBlock, IsNeitherRestoredNorWrittenNorWatchedAndTheOtherBlocksAre)
{
    if (!memoryCanBeLimited())
        GTEST_SKIP() << "memory cannot be limited here";
    project = perAddressProject({{LW, 0, 2}, {LW, 100, hugeCount}, {LW, behindHuge, 2}, {RWI, 0, 1}});
    writeRetentionFile(wordFileName, wordBytes("01000200"));
    writeRetentionFile(rwiFileName, wordBytes("0300"));
    QFile words(retentionPath(wordFileName));
    ASSERT_TRUE(words.open(QIODevice::ReadWrite) && words.seek(4 + 2LL * hugeCount));
    ASSERT_EQ(words.write(wordBytes("04000500")), 4);
    words.close();
    EXPECT_EXIT(
        {
            limitMemory();
            live();
            _exit(HasFailure() ? 1 : 0);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(UnallocatableBlock, IsAlsoOneWhoseSizeInBytesWrapsToANegativeNumber)
{
    project = perAddressProject({{LW, 0, 2}, {LW, 100, (1 << 30) + 100}});
    writeRetentionFile(wordFileName, wordBytes("0100020003000400"));
    panel = makePanel(project.get());
    panel->open();
    panel->init();
    EXPECT_EQ(lines(callsTo({QStringLiteral("writeRegisterValues")})), wrote("LW", 0, 2, "1,2"));
    EXPECT_EQ(change(LW, 150, 9), "sync");
    EXPECT_THAT(change(LW, 1, 7), testing::HasSubstr("read"));
    EXPECT_EQ(hex(retentionFile(wordFileName)), hex(wordBytes("0100070003000400")));
}

} // namespace
