// A buffer for the values of a word block, which may be too large to have.
// SPDX-License-Identifier: MIT
#ifndef POWEROFF_PROTECT_WORD_BUFFER_H
#define POWEROFF_PROTECT_WORD_BUFFER_H

#include <QtCore/QtGlobal>

#include <cstdlib>
#include <memory>

/// Gives memory back to std::free().
struct FreeMemory
{
    /// `memory` comes from std::calloc(), or is null.
    void operator()(void* memory) const { std::free(memory); }
};

/// Owns its words; null when there are none.
typedef std::unique_ptr<ushort, FreeMemory> WordBuffer;

/// `bytes` zeroed bytes; null when `bytes` is not positive or the memory is not to be had.
inline WordBuffer makeWordBuffer(int bytes)
{
    return WordBuffer(bytes > 0 ? static_cast<ushort*>(std::calloc(static_cast<std::size_t>(bytes), 1))
                                : nullptr);
}

#endif
