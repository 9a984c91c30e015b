// A program that was built against the installed module.
// SPDX-License-Identifier: MIT
#include "tests/support/module_test.h"
#include "tests/support/run_tool.h"

namespace {

using InstalledModule = ModuleTest;

TEST_F(InstalledModule, KeepsTheCellOfAProgramThatWasBuiltAgainstIt)
{
    const QString program = QStringLiteral(CONSUMER_PATH);
    EXPECT_EQ(runTool(program, {}).out, "mode 2, LW 100: 0, now 1\n");
    EXPECT_EQ(runTool(program, {}).out, "mode 2, LW 100: 1, now 2\n");
    EXPECT_EQ(retentionFile(wordFileName), QByteArray("\2\0", 2));
}

} // namespace
