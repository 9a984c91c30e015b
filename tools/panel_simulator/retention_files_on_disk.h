// Reports the state of the three retention files: whether they can be written, what reaches them, and which
// values they lack.
// SPDX-License-Identifier: MIT
#pragma once

#include "simulated_host/file_calls/file_calls.h"
#include "simulated_host/memory_areas.h"

#include <QtCore/QDateTime>
#include <QtCore/QString>

#include <array>
#include <map>
#include <vector>

/// In the order of MemoryAreas::all().
inline constexpr std::array<const char*, 3> retentionFileNames = {
    "maintenance-bit.dat", "maintenance-word.dat", "maintenance-RWI.dat"};

/// One of the files in the fixed directory, at this moment.
struct FileOnDisk
{
    bool exists = false;
    qint64 size = 0;
    QDateTime written;
    QString problem; ///< why nothing can be written to it, such as "cannot be written: Permission denied"; or
                     ///< empty
    bool rootOnly = false; ///< its mode lets only root write
};

FileOnDisk fileOnDisk(std::size_t area);

/// The cells whose values the next start would not find in an image file. A file that is missing, unreadable
/// or too short counts as zeros, as at the next start.
std::vector<int> cellsNotInImage(const MemoryArea& area, std::size_t number);

/// Of each retention file.
using WrittenBytes = std::array<qint64, 3>;

/// During its lifetime, counts what anything in this process writes to the retention files.
class WriteCounter : public FileCallHook
{
public:
    WriteCounter() { setFileCallHook(this); }
    ~WriteCounter() override { setFileCallHook(nullptr); }
    WriteCounter(const WriteCounter&) = delete;
    WriteCounter& operator=(const WriteCounter&) = delete;

    void after(const FileCall& call, long long result) override;

    const WrittenBytes& bytes() const { return bytesWritten; } ///< since the beginning
    int writes() const { return successes; }                   ///< calls that wrote, since the beginning

private:
    std::map<int, std::size_t> areas; ///< of descriptors that are open for writing
    WrittenBytes bytesWritten = {};
    int successes = 0;
};
