// Implements stores in plain files: written in place, or as a second file that replaces the first.
// SPDX-License-Identifier: MIT
#include "benchmarks/bench_host.h"
#include "benchmarks/durable_store.h"
#include "simulated_host/private_directory.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <numeric>
#include <unistd.h>

namespace {

void must(bool done)
{
    if (!done)
        storeFailed("plain file", std::strerror(errno));
}

int openFile(const char* name, int flags)
{
    const int fd = open(filePath(name).constData(), flags | O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    must(fd >= 0);
    return fd;
}

void writeAll(int fd, const void* data, std::size_t bytes, off_t at)
{
    must(pwrite(fd, data, bytes, at) == static_cast<ssize_t>(bytes));
}

class InPlaceStore : public DurableStore
{
public:
    InPlaceStore(int cells, int openFlags) : syncs(!(openFlags & O_DSYNC))
    {
        const std::vector<ushort> zeros(static_cast<std::size_t>(cells));
        files[0] = openFile("cells.bin", openFlags);
        writeAll(files[0], zeros.data(), 2 * zeros.size(), 0);
        for (std::size_t i = 1; i < files.size(); ++i)
            files[i] = openFile(("image" + std::to_string(i)).c_str(), openFlags);
        sync();
    }
    ~InPlaceStore() override
    {
        for (const int fd : files)
            close(fd);
    }
    Q_DISABLE_COPY(InPlaceStore)

    void keepCell(int cell, ushort value) override { write(files[0], &value, sizeof value, 2 * cell); }

    void keepImages(int seed) override
    {
        auto file = files.begin();
        for (const std::vector<char>& bytes : imagesToKeep(seed))
            write(*++file, bytes.data(), bytes.size(), 0);
    }

private:
    void write(int fd, const void* data, std::size_t bytes, off_t at) const
    {
        writeAll(fd, data, bytes, at);
        must(!syncs || fdatasync(fd) == 0);
    }

    const bool syncs;
    std::array<int, 4> files; ///< the cells, then the images
};

class TwoFileStore : public DurableStore
{
public:
    explicit TwoFileStore(int cells)
        : directory(open(fixedProjectDirectory, O_RDONLY | O_DIRECTORY | O_CLOEXEC)),
          values(2 * static_cast<std::size_t>(cells))
    {
        must(directory >= 0);
        replace("cells.bin", values);
    }
    ~TwoFileStore() override { close(directory); }
    Q_DISABLE_COPY(TwoFileStore)

    void keepCell(int cell, ushort value) override
    {
        std::memcpy(&values[2 * static_cast<std::size_t>(cell)], &value, sizeof value);
        replace("cells.bin", values);
    }

    void keepImages(int seed) override
    {
        std::vector<char> all;
        for (const std::vector<char>& bytes : imagesToKeep(seed))
            all.insert(all.end(), bytes.begin(), bytes.end());
        replace("images.bin", all);
    }

private:
    void replace(const char* name, const std::vector<char>& content) const
    {
        const int fd = openFile("second.bin", O_TRUNC);
        const quint32 checksum =
            std::accumulate(content.begin(), content.end(), 1U, [](quint32 sum, char byte) {
                return sum * 31 + static_cast<unsigned char>(byte);
            });
        writeAll(fd, content.data(), content.size(), 0);
        writeAll(fd, &checksum, sizeof checksum, static_cast<off_t>(content.size()));
        must(fsync(fd) == 0 && close(fd) == 0);
        must(std::rename(filePath("second.bin").constData(), filePath(name).constData()) == 0);
        must(fsync(directory) == 0);
    }

    const int directory;
    std::vector<char> values;
};

} // namespace

StorePtr makeFdatasyncStore(int cells)
{
    return std::make_unique<InPlaceStore>(cells, 0);
}

StorePtr makeDsyncStore(int cells)
{
    return std::make_unique<InPlaceStore>(cells, O_DSYNC);
}

StorePtr makeTwoFileStore(int cells)
{
    return std::make_unique<TwoFileStore>(cells);
}
