// Fuzzes commands: every line is parsed within the areas' bounds or answered with what was expected.
// SPDX-License-Identifier: MIT
#include "simulated_host/memory_areas.h"
#include "tests/fuzz/fuzz_check.h"
#include "tools/panel_simulator/command.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const Command command =
        parseCommand(QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<int>(size)));
    if (!command.error.isEmpty() ||
        (command.kind != Command::Kind::Get && command.kind != Command::Kind::Set &&
         command.kind != Command::Kind::Expect))
        return 0;
    static const MemoryAreas areas;
    const int cells =
        command.kind == Command::Kind::Get ? command.count : static_cast<int>(command.values.size());
    FUZZ_CHECK(areas.named(command.area) != nullptr);
    FUZZ_CHECK(command.address >= 0 && cells >= 1 && cells <= MemoryArea::cellCount - command.address);
    return 0;
}
