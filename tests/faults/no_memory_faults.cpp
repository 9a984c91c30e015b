// Stands in for memory_faults.cpp where a sanitizer brings the allocator: memory never fails.
// SPDX-License-Identifier: MIT
#include "tests/faults/memory_faults.h"

void planMemoryFault(const MemoryFault&) {}

void endMemoryFaults() {}

void enterModule() {}

void leaveModule() {}

bool memoryFaultHappened()
{
    return false;
}

int moduleBlocksInUse()
{
    return 0;
}
