// Memory that runs out on demand: malloc, calloc, realloc and the aligned ones, interposed for the whole
// process.
// SPDX-License-Identifier: MIT
//
// The shared library `memory_faults` is linked before the C library, so that everything in the process, the
// unmodified module binary included, allocates through it. The operators new of the C++ library end in malloc
// and so fail with it.
#pragma once

struct MemoryFault
{
    int nth;      ///< which allocation fails, from 1
    bool lasting; ///< and all later ones
};

/// Counting starts anew. Allocations count and fail only between enterModule() and leaveModule().
void planMemoryFault(const MemoryFault& fault);
/// Back to memory without end.
void endMemoryFaults();

void enterModule();
void leaveModule();

/// Whether the planned allocation has come.
bool memoryFaultHappened();

/// Number of blocks that were allocated between enterModule() and leaveModule() and are not freed yet.
int moduleBlocksInUse();
