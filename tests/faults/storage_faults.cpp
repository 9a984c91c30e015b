// The interposed calls of the C library.
// SPDX-License-Identifier: MIT
#include "tests/faults/storage_faults.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

namespace {

using Extent = StorageFault::Extent;

bool planned = false;
StorageFault plan;
int seen = 0;
bool failsNext = false; ///< the second half of ShortAndFail
bool happened = false;

/// Plain memory, because calls come before and after the life of any object here.
struct Path
{
    char text[96];
    bool ofStream; ///< opened by fopen()
};
Path faultPath;
Path openPaths[1024]; ///< by descriptor; empty for files that do not count
const Path noPath = {};

enum class Verdict
{
    Forward,
    Fail,
    Halve
};

Verdict happen(Verdict verdict, const Path& path)
{
    if (!happened)
        faultPath = path;
    happened = true;
    if (verdict == Verdict::Fail)
        errno = plan.error;
    return verdict;
}

/// `length`: of a transfer. One that is to come short has its turn only if it is of two bytes or more.
Verdict judge(StorageCall call, const Path& path, size_t length = 0)
{
    if (!planned || call != plan.call || path.text[0] == '\0')
        return Verdict::Forward;
    const bool halves = plan.extent == Extent::Short || plan.extent == Extent::ShortAndFail;
    if (halves && length < 2 && !failsNext)
        return Verdict::Forward;
    ++seen;
    if (failsNext) {
        failsNext = false;
        return happen(Verdict::Fail, path);
    }
    if (seen < plan.nth || (seen > plan.nth && plan.extent != Extent::Lasting))
        return Verdict::Forward;
    failsNext = plan.extent == Extent::ShortAndFail;
    return happen(halves ? Verdict::Halve : Verdict::Fail, path);
}

bool hasPlace(int descriptor)
{
    return descriptor >= 0 && descriptor < static_cast<int>(sizeof openPaths / sizeof openPaths[0]);
}

Verdict judge(StorageCall call, int descriptor, size_t length = 0)
{
    return judge(call, hasPlace(descriptor) ? openPaths[descriptor] : noPath, length);
}

/// The path, if calls on it count; otherwise nothing.
Path counted(const char* path)
{
    static const char prefix[] = "/usr/tavrin";
    Path result = {};
    if (planned && std::strncmp(path, prefix, sizeof prefix - 1) == 0)
        std::strncpy(result.text, path, sizeof result.text - 1);
    return result;
}

void remember(int descriptor, const Path& path)
{
    if (hasPlace(descriptor))
        openPaths[descriptor] = path;
}

/// The C library's function that this one stands before.
template <typename Function> Function* next(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

int openCounted(const char* name, const char* path, int flags, mode_t mode)
{
    const Path countedPath = counted(path);
    if (judge(StorageCall::Open, countedPath) == Verdict::Fail)
        return -1;
    const int descriptor = next<int(const char*, int, ...)>(name)(path, flags, mode);
    remember(descriptor, countedPath);
    return descriptor;
}

FILE* streamCounted(const char* name, const char* path, const char* mode)
{
    Path countedPath = counted(path);
    countedPath.ofStream = true;
    if (judge(StorageCall::StreamOpen, countedPath) == Verdict::Fail)
        return nullptr;
    FILE* const stream = next<FILE*(const char*, const char*)>(name)(path, mode);
    if (stream)
        remember(fileno(stream), countedPath);
    return stream;
}

template <typename Offset> int truncateCounted(const char* name, const char* path, Offset length)
{
    if (judge(StorageCall::Truncate, counted(path)) == Verdict::Fail)
        return -1;
    return next<int(const char*, Offset)>(name)(path, length);
}

template <typename Offset> int truncateCounted(const char* name, int descriptor, Offset length)
{
    if (judge(StorageCall::Truncate, descriptor) == Verdict::Fail)
        return -1;
    return next<int(int, Offset)>(name)(descriptor, length);
}

template <typename Offset> Offset seekCounted(const char* name, int descriptor, Offset offset, int whence)
{
    if (judge(StorageCall::Seek, descriptor) == Verdict::Fail)
        return -1;
    return next<Offset(int, Offset, int)>(name)(descriptor, offset, whence);
}

/// Bytes between the position and the end of the file, so that half of them is less than what is there.
/// Everything that is no regular file has plenty.
size_t readable(int descriptor)
{
    struct stat status;
    const auto position = next<off_t(int, off_t, int)>("lseek")(descriptor, 0, SEEK_CUR);
    if (position < 0 || fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode))
        return SIZE_MAX;
    return status.st_size > position ? static_cast<size_t>(status.st_size - position) : 0;
}

/// The third argument of open(), which is only there for some flags.
mode_t modeArgument(int flags, va_list arguments)
{
    return (flags & (O_CREAT | O_TMPFILE)) ? va_arg(arguments, mode_t) : 0;
}

} // namespace

void planStorageFault(const StorageFault& fault)
{
    plan = fault;
    seen = 0;
    failsNext = false;
    happened = false;
    faultPath = noPath;
    planned = true;
}

void endStorageFaults()
{
    planned = false;
}

bool storageFaultHappened()
{
    return happened;
}

bool storageFaultOnStream()
{
    return faultPath.ofStream;
}

std::string storageFaultPath()
{
    return faultPath.text;
}

extern "C" {

int open(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeArgument(flags, arguments);
    va_end(arguments);
    return openCounted("open", path, flags, mode);
}

int open64(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeArgument(flags, arguments);
    va_end(arguments);
    return openCounted("open64", path, flags, mode);
}

FILE* fopen(const char* path, const char* mode)
{
    return streamCounted("fopen", path, mode);
}

FILE* fopen64(const char* path, const char* mode)
{
    return streamCounted("fopen64", path, mode);
}

ssize_t read(int descriptor, void* buffer, size_t length)
{
    if (planned)
        length = std::min(length, readable(descriptor));
    const Verdict verdict = judge(StorageCall::Read, descriptor, length);
    if (verdict == Verdict::Fail)
        return -1;
    return next<ssize_t(int, void*, size_t)>("read")(descriptor, buffer,
                                                     verdict == Verdict::Halve ? length / 2 : length);
}

ssize_t write(int descriptor, const void* buffer, size_t length)
{
    const Verdict verdict = judge(StorageCall::Write, descriptor, length);
    if (verdict == Verdict::Fail)
        return -1;
    return next<ssize_t(int, const void*, size_t)>("write")(descriptor, buffer,
                                                            verdict == Verdict::Halve ? length / 2 : length);
}

ssize_t writev(int descriptor, const iovec* parts, int count)
{
    size_t length = 0;
    for (int k = 0; k < count; ++k)
        length += parts[k].iov_len;
    const Verdict verdict = judge(StorageCall::Write, descriptor, length);
    if (verdict == Verdict::Fail)
        return -1;
    const auto forward = next<ssize_t(int, const iovec*, int)>("writev");
    if (verdict == Verdict::Forward)
        return forward(descriptor, parts, count);
    std::vector<iovec> shorter(parts, parts + count);
    size_t room = length / 2;
    for (iovec& part : shorter) {
        part.iov_len = std::min(part.iov_len, room);
        room -= part.iov_len;
    }
    return forward(descriptor, shorter.data(), count);
}

off_t lseek(int descriptor, off_t offset, int whence) noexcept
{
    return seekCounted("lseek", descriptor, offset, whence);
}

off64_t lseek64(int descriptor, off64_t offset, int whence) noexcept
{
    return seekCounted("lseek64", descriptor, offset, whence);
}

int truncate(const char* path, off_t length) noexcept
{
    return truncateCounted("truncate", path, length);
}

int truncate64(const char* path, off64_t length) noexcept
{
    return truncateCounted("truncate64", path, length);
}

int ftruncate(int descriptor, off_t length) noexcept
{
    return truncateCounted("ftruncate", descriptor, length);
}

int ftruncate64(int descriptor, off64_t length) noexcept
{
    return truncateCounted("ftruncate64", descriptor, length);
}

int close(int descriptor)
{
    const Verdict verdict = judge(StorageCall::Close, descriptor);
    remember(descriptor, noPath);
    const int result = next<int(int)>("close")(descriptor);
    if (verdict != Verdict::Fail)
        return result;
    errno = plan.error;
    return -1;
}

int fclose(FILE* stream)
{
    const int descriptor = fileno(stream);
    const Verdict verdict = judge(StorageCall::Close, descriptor);
    remember(descriptor, noPath);
    const int result = next<int(FILE*)>("fclose")(stream);
    if (verdict != Verdict::Fail)
        return result;
    errno = plan.error;
    return EOF;
}

int mkdir(const char* path, mode_t mode) noexcept
{
    if (judge(StorageCall::MakeDirectory, counted(path)) == Verdict::Fail)
        return -1;
    return next<int(const char*, mode_t)>("mkdir")(path, mode);
}

} // extern "C"
