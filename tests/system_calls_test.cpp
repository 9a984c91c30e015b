// Counts the system calls and stream buffers of the module's work, between the module and the C library.
// SPDX-License-Identifier: MIT
#include "simulated_host/file_calls/file_calls.h"
#include "tests/support/module_test.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <new>
#include <vector>

namespace {

using Kind = FileCall::Kind;

struct Call
{
    Kind kind;
    size_t bytes;       ///< of reads and writes
    const void* memory; ///< where the bytes of a write come from
};

/// Records seeks, reads and writes.
class Recording : public FileCallHook
{
public:
    int before(FileCall& call) override
    {
        if (call.kind != Kind::Seek && call.kind != Kind::Read && call.kind != Kind::Write)
            return 0;
        // A stream writes its buffer and the new bytes with one call; the buffer is empty here.
        const void* const memory = call.partCount > 0 ? call.parts[call.partCount - 1].iov_base : nullptr;
        calls.push_back({call.kind, static_cast<size_t>(call.length), memory});
        return 0;
    }

    std::vector<Call> calls;
};
Recording recording;
bool counting = false;    ///< of stream buffers
size_t streamBuffers = 0; ///< arrays at least as large as an ordinary stream's buffer

void startRecording()
{
    recording.calls.clear();
    recording.calls.reserve(1 << 18); // so that recording allocates nothing
    streamBuffers = 0;
    counting = true;
    setFileCallHook(&recording);
}

void stopRecording()
{
    setFileCallHook(nullptr);
    counting = false;
}

template <typename Condition> size_t callsThat(Condition condition)
{
    const auto& calls = recording.calls;
    return static_cast<size_t>(std::count_if(calls.begin(), calls.end(), condition));
}

size_t callsOf(Kind kind)
{
    return callsThat([&](const Call& call) { return call.kind == kind; });
}

/// As "seek read:1 seek write:1".
std::string recordedCalls()
{
    stopRecording();
    std::string text;
    for (const Call& call : recording.calls) {
        text += text.empty() ? "" : " ";
        text += call.kind == Kind::Seek ? "seek" : call.kind == Kind::Read ? "read:" : "write:";
        if (call.kind != Kind::Seek)
            text += std::to_string(call.bytes);
    }
    return text;
}

} // namespace

#if !defined(__SANITIZE_ADDRESS__)
/// Counts stream buffers, which are allocated with it.
void* operator new[](std::size_t bytes)
{
    streamBuffers += counting && bytes >= BUFSIZ;
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
        setCallLog(nullptr); // whose strings are not the module's work
        setCommandRunner([](const char*) { return 0; });
    }
    ~SystemCalls() override { stopRecording(); }

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

TEST_F(SystemCalls, AWholeAreaSaveSeeksAndWritesThreeTimesStraightFromTheAreas)
{
    start(wholeAreaProject(1, 5));
    startRecording();
    panel->model->cyclicRun();
    EXPECT_EQ(recordedCalls(), "seek write:65536 seek write:131072 seek write:131072");
    const char* const areas[] = {"LB", "LW", "RWI"};
    for (size_t at = 0; at < 3; ++at)
        EXPECT_EQ(recording.calls[2 * at + 1].memory,
                  panel->areas.named(QLatin1String(areas[at]))->memory().data())
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
        stopRecording();
        const size_t seeks = callsOf(Kind::Seek);
        EXPECT_EQ(callsThat([](const Call& call) { return call.kind == Kind::Read && call.bytes == 1; }),
                  static_cast<size_t>(count));
        EXPECT_EQ(callsOf(Kind::Read), static_cast<size_t>(count))
            << "a longer read fetches bytes that were not requested";
        EXPECT_GE(seeks, static_cast<size_t>(count));
        EXPECT_LE(seeks, static_cast<size_t>(count) + 10) << "the cost of a bit grows with the file";
    }
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
    stopRecording();
    EXPECT_EQ(streamBuffers, 0U);
}

} // namespace
