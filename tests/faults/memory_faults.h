// Makes memory run out on demand: interposes malloc, calloc, realloc and the aligned variants for the whole
// process.
// SPDX-License-Identifier: MIT
//
// The shared library `memory_faults` is linked before the C library, so that everything in the process,
// including the unmodified module binary, allocates through it. The C++ library's operators new call malloc
// and so fail with it.
#pragma once

struct MemoryFault
{
    int nth;      ///< which allocation fails, from 1
    bool lasting; ///< and all later ones
};

/// Restarts the count. Allocations count and fail only between enterModule() and leaveModule().
void planMemoryFault(const MemoryFault& fault);
/// Ends the faults.
void endMemoryFaults();

void enterModule();
void leaveModule();

/// Whether the planned allocation has been reached.
bool memoryFaultHappened();

/// The number of blocks that were allocated between enterModule() and leaveModule() and not yet freed.
int moduleBlocksInUse();
