// Allocates the values of a word block, which may be too large for the memory.
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QtGlobal>

#include <cstdlib>
#include <memory>

typedef std::unique_ptr<ushort, void (*)(void*)> WordBuffer;

/// `bytes` zeroed bytes; null when `bytes` is not positive or the allocation fails. Not a vector, because the
/// pages of a block that is huge by mistake take no memory until they are used.
inline WordBuffer makeWordBuffer(int bytes)
{
    void* const memory = bytes > 0 ? std::calloc(static_cast<std::size_t>(bytes), 1) : nullptr;
    return WordBuffer(static_cast<ushort*>(memory), std::free);
}
