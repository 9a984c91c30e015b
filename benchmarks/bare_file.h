// Opens and uses a retention file without the module: through system calls, or through a stream.
// SPDX-License-Identifier: MIT
#pragma once

#include "benchmarks/bench_host.h"

#include <QtCore/QtGlobal>

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <sys/types.h>
#include <unistd.h>

/// Ends the program if a call failed, because its figure would be worthless.
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

/// Opens a file as the module does: without a buffer, for reading and writing.
inline void openByHand(std::fstream& stream, const char* path)
{
    stream.rdbuf()->pubsetbuf(nullptr, 0);
    stream.open(path, std::ios::in | std::ios::out | std::ios::binary);
    mustMove(stream.is_open() ? 0 : -1, 0);
}

inline void readByHand(std::fstream& stream, void* buffer, std::size_t bytes, std::streamoff offset)
{
    stream.seekg(offset);
    stream.read(static_cast<char*>(buffer), static_cast<std::streamsize>(bytes));
    mustMove(stream.good() ? 0 : -1, 0);
}

inline void writeByHand(std::fstream& stream, const void* buffer, std::size_t bytes, std::streamoff offset)
{
    stream.seekp(offset);
    stream.write(static_cast<const char*>(buffer), static_cast<std::streamsize>(bytes));
    stream.flush();
    mustMove(stream.good() ? 0 : -1, 0);
}

/// Open as long as it lives.
class HandStream
{
public:
    explicit HandStream(const char* name) { openByHand(stream, filePath(name).constData()); }

    std::fstream stream;
};
