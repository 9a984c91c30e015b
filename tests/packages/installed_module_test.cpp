// Tests programs that were built against the installed module.
// SPDX-License-Identifier: MIT
#include "simulated_host/file_calls/path_mapping.h"
#include "tests/support/module_test.h"
#include "tests/support/run_tool.h"

namespace {

/// Where paths are mapped, the mapping must be loaded into the program, too.
class InstalledModule : public ModuleTest
{
protected:
    InstalledModule()
    {
        if (pathMappingNotice().isEmpty())
            return;
        qputenv(usrTavrinVariable, mappedUsrTavrin().toLocal8Bit());
        if (qEnvironmentVariableIsEmpty("TEST_EMULATOR"))
            qputenv("LD_PRELOAD", FILE_CALLS_PATH);
        else
            qputenv("QEMU_SET_ENV",
                    "LD_PRELOAD=" FILE_CALLS_PATH); // for the emulated program, not for the emulator
    }
};

TEST_F(InstalledModule, KeepsTheCellOfAProgramThatIsLinkedWithIt)
{
    const QString program = QStringLiteral(CONSUMER_DIR "/linked_runtime");
    EXPECT_EQ(runTool(program, {}).out, "mode 2, LW 100: 0, now 1\n");
    EXPECT_EQ(runTool(program, {}).out, "mode 2, LW 100: 1, now 2\n");
    EXPECT_EQ(retentionFile(wordFileName), QByteArray("\2\0", 2));
}

TEST_F(InstalledModule, KeepsTheCellOfAProgramThatLoadsItAndTellsItsVersion)
{
    const QString program = QStringLiteral(CONSUMER_DIR "/loading_runtime");
    const QStringList library(QStringLiteral(INSTALLED_MODULE));
    const QByteArray version = "poweroff_protect " MODULE_VERSION "\n";
    EXPECT_EQ(runTool(program, library).out, version + "mode 2, LW 100: 0, now 1\n");
    EXPECT_EQ(runTool(program, library).out, version + "mode 2, LW 100: 1, now 2\n");
    EXPECT_EQ(runTool(program, {QStringLiteral("/no/such.so")}).status, 2);
}

} // namespace
