// The interposed allocation functions.
// SPDX-License-Identifier: MIT
#include "tests/faults/memory_faults.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>

// The C library's own names for what is interposed here; asking the loader for them would allocate.
extern "C" {
void* __libc_malloc(std::size_t);                // NOLINT(bugprone-reserved-identifier)
void* __libc_calloc(std::size_t, std::size_t);   // NOLINT(bugprone-reserved-identifier)
void* __libc_realloc(void*, std::size_t);        // NOLINT(bugprone-reserved-identifier)
void* __libc_memalign(std::size_t, std::size_t); // NOLINT(bugprone-reserved-identifier)
void __libc_free(void*);                         // NOLINT(bugprone-reserved-identifier)
}

namespace {

bool planned = false;
bool inModule = false;
MemoryFault plan;
int seen = 0;
bool happened = false;

/// The module's blocks in use: a hash set without deletion marks, large enough never to fill up.
const std::size_t places = 1 << 16;
void* blocks[places];
int inUse = 0;

std::size_t placeOf(const void* block)
{
    return (reinterpret_cast<std::uintptr_t>(block) >> 4) * 2654435761u % places;
}

void* remember(void* block)
{
    if (!block || !inModule)
        return block;
    std::size_t at = placeOf(block);
    while (blocks[at])
        at = (at + 1) % places;
    blocks[at] = block;
    ++inUse;
    return block;
}

void forget(void* block)
{
    if (!block || inUse == 0)
        return;
    std::size_t at = placeOf(block);
    while (blocks[at] && blocks[at] != block)
        at = (at + 1) % places;
    if (!blocks[at])
        return;
    blocks[at] = nullptr;
    --inUse;
    // What was pushed behind the freed place moves up.
    for (std::size_t k = (at + 1) % places; blocks[k]; k = (k + 1) % places) {
        void* const moved = blocks[k];
        blocks[k] = nullptr;
        std::size_t to = placeOf(moved);
        while (blocks[to])
            to = (to + 1) % places;
        blocks[to] = moved;
    }
}

bool failsNow()
{
    if (!planned || !inModule)
        return false;
    ++seen;
    if (seen < plan.nth || (seen > plan.nth && !plan.lasting))
        return false;
    happened = true;
    errno = ENOMEM;
    return true;
}

} // namespace

void planMemoryFault(const MemoryFault& fault)
{
    plan = fault;
    seen = 0;
    happened = false;
    planned = true;
}

void endMemoryFaults()
{
    planned = false;
}

void enterModule()
{
    inModule = true;
}

void leaveModule()
{
    inModule = false;
}

bool memoryFaultHappened()
{
    return happened;
}

int moduleBlocksInUse()
{
    return inUse;
}

extern "C" {

void* malloc(std::size_t size) noexcept
{
    return failsNow() ? nullptr : remember(__libc_malloc(size));
}

void* calloc(std::size_t count, std::size_t size) noexcept
{
    return failsNow() ? nullptr : remember(__libc_calloc(count, size));
}

void* realloc(void* block, std::size_t size) noexcept
{
    if (failsNow())
        return nullptr;
    void* const moved = __libc_realloc(block, size);
    if (moved || size == 0)
        forget(block);
    return remember(moved);
}

void* memalign(std::size_t alignment, std::size_t size) noexcept
{
    return failsNow() ? nullptr : remember(__libc_memalign(alignment, size));
}

void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept
{
    return failsNow() ? nullptr : remember(__libc_memalign(alignment, size));
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size) noexcept
{
    if (failsNow())
        return ENOMEM;
    *block = remember(__libc_memalign(alignment, size));
    return *block ? 0 : ENOMEM;
}

void free(void* block) noexcept
{
    forget(block);
    __libc_free(block);
}

} // extern "C"
