// Fuzzes projects: any tree in both modes must lead to exactly the mode, period and watched cells
// that the rules give.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/poweroff_protect.h"
#include "simulated_host/memory_areas.h"
#include "simulated_host/simulated_comm.h"
#include "tests/fuzz/fuzz_check.h"
#include "tests/fuzz/project_from_bytes.h"
#include "tests/support/areas.h"
#include "tests/support/expected_project.h"
#include "tests/support/literal_rules.h"

#include <cstring>

namespace {

/// Above it the watch list is skipped: comparing it would take most of the time.
const std::int64_t mostWatched = 500;

std::int64_t cellsIn(const ExpectedProject& model)
{
    std::int64_t cells = 0;
    for (const auto& blocks : model.blocks)
        for (const ExpectedBlock& block : blocks)
            cells += std::max(0, block.count);
    return cells;
}

void checkWatchList(poweroff_protect& module, const ExpectedProject& model)
{
    QList<RegisterValueChangeSize> watched;
    module.getMonitorTriggerAddr(watched);
    int at = 0;
    for (std::size_t a = 0; a < 3; ++a) {
        for (const ExpectedBlock& block : model.blocks[a]) {
            for (std::int32_t j = 0; j < block.count; ++j, ++at) {
                FUZZ_CHECK(at < watched.size());
                const RegisterValueChangeSize& record = watched.at(at);
                FUZZ_CHECK(record.address == sum32(block.entry.index, j));
                FUZZ_CHECK(std::strcmp(record.areaName, testAreas[a].name) == 0);
                FUZZ_CHECK(record.hostWord0 == 0 && record.hostWord4 == -1 && record.hostWord12 == 0);
                FUZZ_CHECK(record.hostFlag48 == 0 && record.changeSize == 1);
            }
        }
    }
    FUZZ_CHECK(at == watched.size());
}

void checkOpened(poweroff_protect& module, const ExpectedProject& model)
{
    FUZZ_CHECK(module.retentionMode == model.mode);
    FUZZ_CHECK(module.cyclePeriodMs == model.periodMs && module.cycleRemainingMs == model.periodMs);
    FUZZ_CHECK(module.extModelParam == 10 && module.extModelString == QStringLiteral("text"));
    if (!model.isAmbiguous && cellsIn(model) <= mostWatched)
        checkWatchList(module, model);
}

/// A panel without area memory: whole-area mode creates and opens its files but transfers no image.
SimulatedComm& commWithoutMemory()
{
    static MemoryAreas areas;
    static SimulatedComm comm(areas);
    for (int code = 0; code < 3; ++code)
        comm.removeAreaMemory(code);
    return comm;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzInput input(data, size);
    const auto project = projectFromBytes(input);
    const ExpectedProject model = expectedOf(*project);

    for (int life = 0; life < 2; ++life) { // the second one finds the files of the first
        poweroff_protect module;
        module.extModelOpen(project.get(), QStringLiteral("text"), &commWithoutMemory());
        checkOpened(module, model);
        module.extModelOpen(project.get(), QStringLiteral("text"), &commWithoutMemory());
        checkOpened(module, model); // nothing must be doubled
    }
    return 0;
}
