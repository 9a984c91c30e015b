// Fails looks at the files: what is not known to be missing or too short is neither created nor emptied.
// SPDX-License-Identifier: MIT
#include "simulated_host/file_calls/file_calls.h"
#include "tests/support/module_test.h"

#include <QtCore/QFile>

#include <cerrno>
#include <cstring>

namespace {

/// Fails every look at a retention file.
class FailingLooks : public FileCallHook
{
public:
    explicit FailingLooks(int error) : error(error) { setFileCallHook(this); }
    ~FailingLooks() override { setFileCallHook(nullptr); }

    int before(FileCall& call) override
    {
        if (call.kind != FileCall::Kind::Look || !call.path || !std::strstr(call.path, "/maintenance-"))
            return 0;
        ++count;
        return error;
    }

    const int error;
    int count = 0;
};

class FailedLook : public ModuleTest, public testing::WithParamInterface<int>
{
protected:
    /// One start of a panel whose looks at the files fail.
    std::unique_ptr<Panel> startBlind(object* project)
    {
        FailingLooks looks(GetParam());
        std::unique_ptr<Panel> panel = startPanel(project);
        EXPECT_GE(looks.count, 3) << "the module looks in a way that this test does not reach";
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
