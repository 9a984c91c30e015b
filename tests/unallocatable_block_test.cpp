// Word blocks too large for memory: they are left alone, and everything else goes on.
// SPDX-License-Identifier: MIT
#include "tests/support/module_test.h"
#include "tests/support/storage.h"

#include <cstdlib>
#include <utility>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__)
/// Under AddressSanitizer the address space cannot be limited, but the size of one allocation can.
extern "C" const char* __asan_default_options()
{
    return "allocator_may_return_null=1:max_allocation_size_mb=256";
}
#endif

namespace {

const QString LW = QStringLiteral("LW");
const QString RWI = QStringLiteral("RWI");

constexpr int hugeCount = 400 * 1000 * 1000;   // 800 MB of values
constexpr int wrappingCount = (1 << 30) + 100; // a byte size beyond 32 bits, negative as a signed number
constexpr int behindHuge = 100 + hugeCount;

/// Leaves this process a quarter of a gigabyte more than it has.
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

/// False where the limit is only pretended, as by an emulator.
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

class UnallocatableBlock : public ModuleTest
{
protected:
    void SetUp() override
    {
        if (!memoryCanBeLimited())
            GTEST_SKIP() << "memory cannot be limited here";
    }

    /// Runs `body` in a child with little memory; its failures are the test's.
    template <typename Body> void withLittleMemory(Body body)
    {
        EXPECT_EXIT(
            {
                limitMemory();
                body();
                _exit(HasFailure() ? 1 : 0);
            },
            testing::ExitedWithCode(0), "");
    }

    std::string restored()
    {
        panel = makePanel(project.get());
        calls.clear();
        panel->open();
        panel->init();
        return lines(callsTo({QStringLiteral("writeRegisterValues")}));
    }

    QStringList change(const QString& area, int address, ushort value)
    {
        panel->areas.named(area)->setCell(address, value);
        calls.clear();
        panel->reportChange(area, address);
        return calls;
    }

    /// Some bytes of a file that is too long to be read as a whole.
    static QByteArray bytesAt(const char* fileName, qint64 offset, qint64 length)
    {
        QFile file(retentionPath(QString::fromLatin1(fileName)));
        return file.open(QIODevice::ReadOnly) && file.seek(offset) ? file.read(length) : QByteArray();
    }

    static QString read(int address, int count)
    {
        return QStringLiteral("readRegisterValues link=LW area=LW address=%1 selector=0 count=%2")
            .arg(address)
            .arg(count);
    }

    static QString wrote(int address, const char* values)
    {
        return QStringLiteral("writeRegisterValues link=Local area=LW address=%1 selector=-1 count=2 data=%2")
            .arg(address)
            .arg(QLatin1String(values));
    }

    std::unique_ptr<object> project;
    std::unique_ptr<Panel> panel;
};

TEST_F(UnallocatableBlock, IsNotWrittenThroughAndTheOtherBlocksAre)
{
    project = perAddressProject({{LW, 0, 2}, {LW, 100, hugeCount}, {LW, behindHuge, 2}, {RWI, 0, 1}});
    withLittleMemory([&] {
        EXPECT_EQ(restored(), "");
        EXPECT_EQ(lines(change(LW, 1, 0x0102)), lines({read(0, 2), QStringLiteral("sync")}));
        EXPECT_EQ(lines(change(LW, 150, 0x0304)), "sync") << "nothing is read for it";
        EXPECT_EQ(lines(change(LW, behindHuge, 0)), lines({read(behindHuge, 2), QStringLiteral("sync")}));
        change(RWI, 0, 0x0506);
        EXPECT_EQ(hex(bytesAt(wordFileName, 0, 8)), "00 00 02 01 00 00 00 00");
        EXPECT_EQ(QFileInfo(retentionPath(wordFileName)).size(), 4 + 2LL * hugeCount + 4);
        EXPECT_EQ(hex(retentionFile(rwiFileName)), "06 05");
    });
}

TEST_F(UnallocatableBlock, IsNotRestoredAndTheOtherBlocksAre)
{
    project = perAddressProject({{LW, 0, 2}, {LW, 100, hugeCount}, {LW, behindHuge, 2}, {RWI, 0, 1}});
    writeRetentionFile(wordFileName, QByteArray::fromHex("01000200"));
    writeRetentionFile(rwiFileName, QByteArray::fromHex("0300"));
    QFile words(retentionPath(wordFileName));
    ASSERT_TRUE(words.open(QIODevice::ReadWrite) && words.seek(4 + 2LL * hugeCount));
    ASSERT_EQ(words.write("\x04\x00\x05\x00", 4), 4);
    words.close();
    withLittleMemory([&] {
        EXPECT_EQ(
            restored(),
            lines({wrote(0, "1,2"), wrote(behindHuge, "4,5"),
                   QStringLiteral(
                       "writeRegisterValues link=Local area=RWI address=0 selector=-1 count=1 data=3")}));
    });
}

TEST_F(UnallocatableBlock, WithAByteSizeThatIsNotPositiveIsLeftAloneTheSame)
{
    project = perAddressProject({{LW, 0, 2}, {LW, 100, wrappingCount}, {RWI, 0, 1}});
    writeRetentionFile(wordFileName, QByteArray::fromHex("0100020003000400"));
    withLittleMemory([&] {
        EXPECT_EQ(restored(), lines({wrote(0, "1,2")}));
        EXPECT_EQ(lines(change(LW, 150, 9)), "sync");
        EXPECT_EQ(lines(change(LW, 1, 7)), lines({read(0, 2), QStringLiteral("sync")}));
        EXPECT_EQ(hex(retentionFile(wordFileName)), "01 00 07 00 03 00 04 00");
        change(RWI, 0, 8);
        EXPECT_EQ(hex(retentionFile(rwiFileName)), "08 00");
    });
}

TEST_F(UnallocatableBlock, IsNotWatchedWhenItsRecordsDoNotFitAndTheOtherBlocksAre)
{
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "many small records are not limited under AddressSanitizer";
#endif
    project = perAddressProject({{LW, 0, 2}, {LW, 100, hugeCount}, {LW, behindHuge, 2}, {RWI, 5, 1}});
    withLittleMemory([&] {
        restored();
        QList<RegisterValueChangeSize> records;
        panel->model->getMonitorTriggerAddr(records);
        QStringList cells;
        for (const RegisterValueChangeSize& record : std::as_const(records))
            cells.append(QStringLiteral("%1 %2").arg(QLatin1String(record.areaName)).arg(record.address));
        EXPECT_EQ(
            lines(cells.mid(0, 10)),
            lines({QStringLiteral("LW 0"), QStringLiteral("LW 1"), QStringLiteral("LW %1").arg(behindHuge),
                   QStringLiteral("LW %1").arg(behindHuge + 1), QStringLiteral("RWI 5")}));
    });
}

TEST_F(UnallocatableBlock, OfThePermittedSizeIsKept)
{
    const int count = 10 * 1000 * 1000;
    project = perAddressProject({{LW, 0, 2}, {LW, 100, count}});
    withLittleMemory([&] {
        restored();
        EXPECT_EQ(lines(change(LW, 150, 0x0102)), lines({read(100, count), QStringLiteral("sync")}));
        EXPECT_EQ(hex(bytesAt(wordFileName, 4 + 2LL * 50, 4)), "02 01 00 00");
        EXPECT_EQ(QFileInfo(retentionPath(wordFileName)).size(), 4 + 2LL * count);
    });
}

} // namespace
