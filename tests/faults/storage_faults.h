// Makes storage fail on demand: a hook on the file calls of everything in the process, including QtCore, the
// C++ library and the unmodified module binary.
// SPDX-License-Identifier: MIT
//
// Only calls on paths below "/usr/tavrin" and on descriptors opened there count, and only while storage
// faults are planned.
#pragma once

#include "simulated_host/file_calls/file_calls.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

struct StorageFault
{
    enum class Extent
    {
        Once,        ///< just that call
        Lasting,     ///< that call and all later ones that count
        Short,       ///< that read or write transfers half of the bytes and reports it; nothing fails
        ShortAndFail ///< the same, and the next call that counts fails
    };

    std::optional<FileCall::Kind> kind; ///< calls of this kind count; nothing: all calls count
    int nth;                            ///< which of them fails, from 1
    int error;                          ///< the errno of the failure; unused for Short
    Extent extent;
};

/// A call that is about to be made.
struct StorageTurn
{
    FileCall::Kind kind;
    std::string path;          ///< of the file concerned
    bool onStream;             ///< on a retention stream that fopen() opened
    off64_t position;          ///< where a read begins in the file
    const StorageFault* fault; ///< that hits this call; null for none
};
using StorageWatch = std::function<void(const StorageTurn&)>;

/// Restarts the count. Each fault hits its call; where two meet, the first one of `faults` does. `watch` is
/// called for every call that counts.
void planStorageFaults(const std::vector<StorageFault>& faults, StorageWatch watch);
/// Ends the faults.
void endStorageFaults();
