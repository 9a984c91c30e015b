// Records what this process does to the project directory, through any library.
// SPDX-License-Identifier: MIT
#pragma once

#include "tests/power_cut/disk_states/disk.h"

#include <functional>

/// While it exists, passes every change of the project directory by any library in this process to `sink`,
/// after the change. Only one Recorder at a time, in one thread. Writes by other means than the usual calls
/// (mmap, stdio buffers) are not seen: compare the record with the directory.
class Recorder
{
public:
    explicit Recorder(std::function<void(const DiskOp&)> sink);
    ~Recorder();
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    /// What the directory held when the recording began.
    const Disk& initialDisk() const { return initial; }

private:
    Disk initial;
};

/// The project directory as it is.
DiskImage readProjectDirectory();
/// Gives the project directory exactly these contents, without recording it.
void writeProjectDirectory(const DiskImage& image);
