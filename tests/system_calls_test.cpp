// The system calls and the stream buffers that the module's work costs, counted between the module and the C
// library.
// SPDX-License-Identifier: MIT
#include "tests/support/module_test.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <new>

#include <dlfcn.h>
#include <sys/types.h>
#include <sys/uio.h>

namespace {

const QString LB = QStringLiteral("LB");
const QString LW = QStringLiteral("LW");

enum class Kind
{
    Seek,
    Read,
    Write
};

/// Plain memory, because calls come before and after the life of any object here.
struct Call
{
    Kind kind;
    size_t bytes;       ///< of reads and writes
    const void* memory; ///< where the bytes of a write come from
};
Call recorded[64];
size_t calls = 0; ///< also those beyond the record
size_t seeks = 0;
size_t reads = 0;
size_t oneByteReads = 0;
size_t streamBuffers = 0; ///< arrays of the size of an ordinary stream's buffer, or larger
bool recording = false;

void record(Kind kind, size_t bytes = 0, const void* memory = nullptr)
{
    if (!recording)
        return;
    if (calls < sizeof recorded / sizeof recorded[0])
        recorded[calls] = {kind, bytes, memory};
    ++calls;
    seeks += kind == Kind::Seek;
    reads += kind == Kind::Read;
    oneByteReads += kind == Kind::Read && bytes == 1;
}

void startRecording()
{
    calls = seeks = reads = oneByteReads = streamBuffers = 0;
    recording = true;
}

/// As "seek read:1 seek write:1".
std::string recordedCalls()
{
    recording = false;
    std::string text;
    for (size_t at = 0; at < calls; ++at) {
        const Call& call = recorded[at];
        text += text.empty() ? "" : " ";
        text += call.kind == Kind::Seek ? "seek" : call.kind == Kind::Read ? "read:" : "write:";
        if (call.kind != Kind::Seek)
            text += std::to_string(call.bytes);
    }
    return text;
}

template <typename Function> Function* next(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" {

off_t lseek(int descriptor, off_t offset, int whence)
{
    record(Kind::Seek);
    return next<off_t(int, off_t, int)>("lseek")(descriptor, offset, whence);
}

off64_t lseek64(int descriptor, off64_t offset, int whence)
{
    record(Kind::Seek);
    return next<off64_t(int, off64_t, int)>("lseek64")(descriptor, offset, whence);
}

ssize_t read(int descriptor, void* buffer, size_t bytes)
{
    record(Kind::Read, bytes);
    return next<ssize_t(int, void*, size_t)>("read")(descriptor, buffer, bytes);
}

ssize_t write(int descriptor, const void* buffer, size_t bytes)
{
    record(Kind::Write, bytes, buffer);
    return next<ssize_t(int, const void*, size_t)>("write")(descriptor, buffer, bytes);
}

/// A stream writes what it holds and what it was given with one call; the former is nothing here.
ssize_t writev(int descriptor, const struct iovec* parts, int count)
{
    size_t bytes = 0;
    for (int part = 0; part < count; ++part)
        bytes += parts[part].iov_len;
    record(Kind::Write, bytes, parts[count - 1].iov_base);
    return next<ssize_t(int, const struct iovec*, int)>("writev")(descriptor, parts, count);
}
}

#if !defined(__SANITIZE_ADDRESS__)
/// Stream buffers are made by it.
void* operator new[](std::size_t bytes)
{
    streamBuffers += recording && bytes >= BUFSIZ;
    if (void* const memory = std::malloc(bytes))
        return memory;
    throw std::bad_alloc();
}

void operator delete[](void* memory) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept
{
    std::free(memory);
}
#endif

namespace {

class SystemCalls : public ModuleTest
{
protected:
    SystemCalls()
    {
        setCallLog(nullptr); // its strings are not the module's work
        setCommandRunner([](const char*) { return 0; });
    }
    ~SystemCalls() override { recording = false; }

    void start(std::unique_ptr<object> configured)
    {
        project = std::move(configured);
        panel = startPanel(project.get());
    }

    std::string callsOfChange(const QString& area, int address)
    {
        startRecording();
        panel->reportChange(area, address);
        return recordedCalls();
    }

    std::unique_ptr<object> project;
    std::unique_ptr<Panel> panel;
};

TEST_F(SystemCalls, AChangedWordCostsOneSeekAndOneWriteOfItsBlock)
{
    start(perAddressProject({{LW, 100, 10}, {LW, 200, 1000}}));
    panel->reportChange(LW, 100); // opens the file
    EXPECT_EQ(callsOfChange(LW, 103), "seek write:20");
    EXPECT_EQ(callsOfChange(LW, 203), "seek write:2000");
}

TEST_F(SystemCalls, AChangedBitCostsTwoSeeksOneReadAndOneWriteOfOneByte)
{
    start(perAddressProject({{LB, 100, 100}}));
    panel->reportChange(LB, 100);
    EXPECT_EQ(callsOfChange(LB, 177), "seek read:1 seek write:1");
}

TEST_F(SystemCalls, AChangeOfACellThatIsNotKeptCostsNone)
{
    start(perAddressProject({{LW, 100, 10}}));
    panel->reportChange(LW, 100);
    EXPECT_EQ(callsOfChange(LW, 110), "");
}

TEST_F(SystemCalls, AWholeAreaSaveSeeksAndWritesThreeTimesStraightFromTheAreas)
{
    start(wholeAreaProject(1, 5));
    startRecording();
    panel->model->cyclicRun();
    EXPECT_EQ(recordedCalls(), "seek write:65536 seek write:131072 seek write:131072");
    const char* const areas[] = {"LB", "LW", "RWI"};
    for (size_t at = 0; at < 3; ++at)
        EXPECT_EQ(recorded[2 * at + 1].memory, panel->areas.named(QLatin1String(areas[at]))->memory().data())
            << areas[at] << " is copied before it is written";
}

TEST_F(SystemCalls, ARestoredBitCostsOneReadOfOneByteHoweverLongTheFileIs)
{
    for (const int count : {64, 4096, 65536}) {
        writeRetentionFile(bitFileName, QByteArray(count / 8 + 1, '\x55'));
        const auto bits = perAddressProject({{LB, 0, count}});
        const auto restored = makePanel(bits.get());
        restored->open();
        startRecording();
        restored->init();
        recording = false;
        EXPECT_EQ(oneByteReads, static_cast<size_t>(count));
        EXPECT_EQ(reads, oneByteReads) << "a longer read fetches bytes that nobody asked for";
        EXPECT_GE(seeks, static_cast<size_t>(count));
        EXPECT_LE(seeks, static_cast<size_t>(count) + 10) << "the cost of a bit grows with the file";
    }
}

TEST_F(SystemCalls, ARestoredWordBlockCostsOneRead)
{
    writeRetentionFile(wordFileName, QByteArray(131072, '\x55'));
    const auto words = perAddressProject({{LW, 0, 65536}});
    const auto restored = makePanel(words.get());
    restored->open();
    startRecording();
    restored->init();
    EXPECT_THAT(recordedCalls(), testing::HasSubstr("read:131072"));
    EXPECT_EQ(reads, 1U);
}

TEST_F(SystemCalls, NoStreamBufferIsEverAllocated)
{
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "AddressSanitizer's allocator takes the place of the one that counts";
#endif
    writeRetentionFile(bitFileName, QByteArray(13, '\x55'));
    writeRetentionFile(wordFileName, QByteArray(20, '\x55'));
    startRecording();
    {
        const std::ifstream ordinary(retentionPath(wordFileName).toLatin1().constData());
    }
    ASSERT_EQ(streamBuffers, 1U) << "an ordinary stream's buffer would go unnoticed";
    startRecording();
    start(perAddressProject({{LB, 0, 100}, {LW, 0, 10}}));
    panel->reportChange(LB, 3);
    panel->reportChange(LW, 3);
    recording = false;
    EXPECT_EQ(streamBuffers, 0U);
}

} // namespace
