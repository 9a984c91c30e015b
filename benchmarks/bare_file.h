// A retention file opened without the module.
// SPDX-License-Identifier: MIT
#pragma once

#include "benchmarks/bench_host.h"

#include <QtCore/QtGlobal>

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/types.h>
#include <unistd.h>

/// Ends the program when a system call that must not fail did: its figure would be worthless.
inline void mustMove(ssize_t moved, std::size_t wanted)
{
    if (moved != static_cast<ssize_t>(wanted)) {
        std::perror("a bare system call failed");
        std::exit(1);
    }
}

inline void readAt(int fd, void* buffer, std::size_t bytes, off_t offset)
{
    lseek(fd, offset, SEEK_SET);
    mustMove(read(fd, buffer, bytes), bytes);
}

inline void writeAt(int fd, const void* buffer, std::size_t bytes, off_t offset)
{
    lseek(fd, offset, SEEK_SET);
    mustMove(write(fd, buffer, bytes), bytes);
}

/// Open for reading and writing as long as it lives.
class BareFile
{
public:
    explicit BareFile(const char* name) : fd(open(filePath(name).constData(), O_RDWR | O_CLOEXEC))
    {
        mustMove(fd < 0 ? -1 : 0, 0);
    }
    ~BareFile() { close(fd); }
    Q_DISABLE_COPY(BareFile)

    const int fd;
};
