// Interposes the allocation functions.
// SPDX-License-Identifier: MIT
#include "tests/faults/memory_faults.h"

#include <cerrno>
#include <cstddef>
#include <new>
#include <unordered_set>

// The C library's own names for the interposed functions; looking them up with dlsym() would allocate.
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

/// Allocates without the functions below.
template <typename T> struct PlainAllocator
{
    using value_type = T;
    PlainAllocator() = default;
    template <typename U> PlainAllocator(const PlainAllocator<U>&) {}
    T* allocate(std::size_t count) { return static_cast<T*>(__libc_malloc(count * sizeof(T))); }
    void deallocate(T* memory, std::size_t) { __libc_free(memory); }
    template <typename U> bool operator==(const PlainAllocator<U>&) const { return true; }
    template <typename U> bool operator!=(const PlainAllocator<U>&) const { return false; }
};

/// The module's blocks in use. Created for the first one and never destroyed.
auto& blocks()
{
    using Set = std::unordered_set<void*, std::hash<void*>, std::equal_to<void*>, PlainAllocator<void*>>;
    static Set& set = *new (__libc_malloc(sizeof(Set))) Set;
    return set;
}

void* remember(void* block)
{
    if (block && inModule)
        blocks().insert(block);
    return block;
}

void forget(void* block)
{
    if (block)
        blocks().erase(block);
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
    return static_cast<int>(blocks().size());
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
