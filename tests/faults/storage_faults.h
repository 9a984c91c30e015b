// Storage that fails on demand: a hook on the file calls of everything in the process, QtCore, the C++
// library and the unmodified module binary among them. SPDX-License-Identifier: MIT
//
// Only calls on paths below "/usr/tavrin" and on descriptors opened there count, and only while storage
// faults are planned.
#pragma once

#include <string>

enum class StorageCall
{
    Open,       ///< open(), by which files are made
    StreamOpen, ///< fopen(), by which the C++ library opens
    Read,
    Write, ///< write() and writev()
    Seek,
    Truncate, ///< truncate() and ftruncate()
    Close,    ///< close() and fclose(): as on Linux, the descriptor is gone even so
    MakeDirectory
};

struct StorageFault
{
    enum class Extent
    {
        Once,        ///< just that call
        Lasting,     ///< that call and all later ones of its kind
        Short,       ///< that read or write moves half of the bytes and says so; nothing fails
        ShortAndFail ///< the same, and the next call of its kind fails
    };

    StorageCall call;
    int nth;   ///< which call of the kind fails, from 1
    int error; ///< the errno of the failure; unused for Short
    Extent extent;
};

/// Counting starts anew and the fault happens when its turn comes.
void planStorageFault(const StorageFault& fault);
/// Back to storage that works.
void endStorageFaults();

/// Whether the planned call has come, on which path, and whether that was opened by fopen().
bool storageFaultHappened();
bool storageFaultOnStream();
std::string storageFaultPath();
