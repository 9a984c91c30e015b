// Tests a word block whose size in bytes wraps to a negative number: it is left alone, and everything else
// goes on. What a block costs when memory runs out is tested in faults/memory_faults_test.cpp.
// SPDX-License-Identifier: MIT
#include "tests/support/module_test.h"
#include "tests/support/storage.h"
#include "tests/support/word_bytes.h"

namespace {

class UnallocatableBlock : public ModuleTest
{
protected:
    std::string change(int address, ushort value)
    {
        panel->areas.named(LW)->setCell(address, value);
        calls.clear();
        panel->reportChange(LW, address);
        return lines(calls);
    }

    std::unique_ptr<object> project = perAddressProject({{LW, 0, 2}, {LW, 100, (1 << 30) + 100}});
    std::unique_ptr<Panel> panel = makePanel(project.get());
};

TEST_F(UnallocatableBlock, IsNeitherRestoredNorWrittenAndTheOtherIs)
{
    writeRetentionFile(wordFileName, wordBytes("0100020003000400"));
    panel->open();
    panel->init();
    EXPECT_EQ(lines(callsTo({QStringLiteral("writeRegisterValues")})),
              "writeRegisterValues link=Local area=LW address=0 selector=-1 count=2 data=1,2");
    EXPECT_EQ(change(150, 9), "sync") << "nothing is read for it";
    EXPECT_THAT(change(1, 7), testing::HasSubstr("read"));
    EXPECT_EQ(hex(retentionFile(wordFileName)), hex(wordBytes("0100070003000400")));
}

} // namespace
