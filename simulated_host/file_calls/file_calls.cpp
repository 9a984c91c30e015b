// Interposes the calls that are passed to hooks.
// SPDX-License-Identifier: MIT
#include "simulated_host/file_calls/file_calls.h"

#include "simulated_host/file_calls/next_function.h"
#include "simulated_host/file_calls/path_mapping.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <type_traits>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using Kind = FileCall::Kind;

FileCallHook* hook = nullptr;

int descriptorOf(FILE* stream)
{
    return stream ? fileno(stream) : -1;
}

template <typename Number> Number descriptorOf(Number result)
{
    return result;
}

/// Makes the call with `forward(call)`, as the hook decides.
template <typename Forward> auto run(FileCall call, Forward forward)
{
    using Result = decltype(forward(call));
    FileCallHook* const told = std::exchange(hook, nullptr); // calls of the hook itself are not passed to it
    if (!told)
        return forward(call);
    const int error = told->before(call);
    Result result;
    if constexpr (std::is_pointer_v<Result>)
        result = nullptr;
    else
        result = -1;
    if (error == 0 || call.kind == Kind::Close) {
        const Result answer = forward(call);
        const int ownErrno = errno;
        if (error == 0) {
            if (call.kind == Kind::Open || call.kind == Kind::StreamOpen)
                call.descriptor = static_cast<int>(descriptorOf(answer));
            told->after(call, descriptorOf(answer));
            result = answer;
        }
        errno = ownErrno;
    }
    if (error != 0)
        errno = error;
    hook = told;
    return result;
}

FileCall pathCall(Kind kind, const char* path, int flags = 0)
{
    FileCall call = {kind};
    call.path = path;
    call.flags = flags;
    return call;
}

FileCall descriptorCall(Kind kind, int descriptor)
{
    FileCall call = {kind};
    call.descriptor = descriptor;
    return call;
}

FileCall truncation(FileCall call, off64_t length)
{
    call.length = length;
    return call;
}

/// A transfer of `parts`, made with `forward(parts, count)`: of fewer bytes if the hook decides so.
template <typename Forward>
ssize_t transfer(Kind kind, int descriptor, const iovec* parts, int count, off64_t position, Forward forward)
{
    if (!hook)
        return forward(parts, count);
    FileCall call = descriptorCall(kind, descriptor);
    call.parts = parts;
    call.partCount = count;
    call.position = position;
    for (int k = 0; k < count; ++k)
        call.length += static_cast<off64_t>(parts[k].iov_len);
    const off64_t wanted = call.length;
    return run(call, [&](const FileCall& judged) {
        if (judged.length >= wanted)
            return forward(parts, count);
        std::vector<iovec> shorter(parts, parts + count);
        auto room = static_cast<size_t>(judged.length);
        for (iovec& part : shorter) {
            part.iov_len = std::min(part.iov_len, room);
            room -= part.iov_len;
        }
        return forward(shorter.data(), count);
    });
}

/// The same from one piece of memory, made with `forward(length)`.
template <typename Forward>
ssize_t transfer(Kind kind, int descriptor, const void* memory, size_t length, off64_t position,
                 Forward forward)
{
    const iovec whole = {const_cast<void*>(memory), length};
    return transfer(kind, descriptor, &whole, 1, position,
                    [&](const iovec* parts, int) { return forward(parts->iov_len); });
}

/// The flags of open() for a mode of fopen().
int flagsOf(const char* mode)
{
    const bool both = mode[0] != '\0' && (mode[1] == '+' || (mode[1] != '\0' && mode[2] == '+'));
    switch (mode[0]) {
    case 'w':
        return (both ? O_RDWR : O_WRONLY) | O_CREAT | O_TRUNC;
    case 'a':
        return (both ? O_RDWR : O_WRONLY) | O_CREAT | O_APPEND;
    default:
        return both ? O_RDWR : O_RDONLY;
    }
}

} // namespace

void setFileCallHook(FileCallHook* newHook)
{
    hook = newHook;
}

/// The last argument of open(), which is only there for some flags.
#define READ_MODE                                                                                            \
    va_list arguments;                                                                                       \
    va_start(arguments, flags);                                                                              \
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) ? va_arg(arguments, mode_t) : 0;                     \
    va_end(arguments)

#define OPEN(NAME)                                                                                           \
    int NAME(const char* path, int flags, ...)                                                               \
    {                                                                                                        \
        NEXT(NAME);                                                                                          \
        READ_MODE;                                                                                           \
        return run(pathCall(Kind::Open, path, flags),                                                        \
                   [&](const FileCall&) { return next(MappedPath(path), flags, mode); });                    \
    }

#define OPENAT(NAME)                                                                                         \
    int NAME(int directory, const char* path, int flags, ...)                                                \
    {                                                                                                        \
        NEXT(NAME);                                                                                          \
        READ_MODE;                                                                                           \
        return run(pathCall(Kind::Open, path, flags),                                                        \
                   [&](const FileCall&) { return next(directory, MappedPath(path), flags, mode); });         \
    }

#define CREAT(NAME)                                                                                          \
    int NAME(const char* path, mode_t mode)                                                                  \
    {                                                                                                        \
        NEXT(NAME);                                                                                          \
        return run(pathCall(Kind::Open, path, O_CREAT | O_WRONLY | O_TRUNC),                                 \
                   [&](const FileCall&) { return next(MappedPath(path), mode); });                           \
    }

#define FOPEN(NAME)                                                                                          \
    FILE* NAME(const char* path, const char* mode)                                                           \
    {                                                                                                        \
        NEXT(NAME);                                                                                          \
        return run(pathCall(Kind::StreamOpen, path, flagsOf(mode)),                                          \
                   [&](const FileCall&) { return next(MappedPath(path), mode); });                           \
    }

#define TRANSFER(NAME, KIND, MEMORY)                                                                         \
    ssize_t NAME(int descriptor, MEMORY memory, size_t length)                                               \
    {                                                                                                        \
        NEXT(NAME);                                                                                          \
        return transfer(KIND, descriptor, memory, length, -1,                                                \
                        [&](size_t judged) { return next(descriptor, memory, judged); });                    \
    }

#define TRANSFER_AT(NAME, KIND, MEMORY, OFFSET)                                                              \
    ssize_t NAME(int descriptor, MEMORY memory, size_t length, OFFSET position)                              \
    {                                                                                                        \
        NEXT(NAME);                                                                                          \
        return transfer(KIND, descriptor, memory, length, position,                                          \
                        [&](size_t judged) { return next(descriptor, memory, judged, position); });          \
    }

#define TRANSFER_PARTS(NAME, KIND)                                                                           \
    ssize_t NAME(int descriptor, const iovec* parts, int count)                                              \
    {                                                                                                        \
        NEXT(NAME);                                                                                          \
        return transfer(KIND, descriptor, parts, count, -1, [&](const iovec* judged, int judgedCount) {      \
            return next(descriptor, judged, judgedCount);                                                    \
        });                                                                                                  \
    }

#define SEEK(NAME, OFFSET)                                                                                   \
    OFFSET NAME(int descriptor, OFFSET offset, int whence) noexcept                                          \
    {                                                                                                        \
        NEXT(NAME);                                                                                          \
        return run(descriptorCall(Kind::Seek, descriptor),                                                   \
                   [&](const FileCall&) { return next(descriptor, offset, whence); });                       \
    }

#define TRUNCATE(NAME, OFFSET)                                                                               \
    int NAME(const char* path, OFFSET length) noexcept                                                       \
    {                                                                                                        \
        NEXT(NAME);                                                                                          \
        return run(truncation(pathCall(Kind::Truncate, path), length),                                       \
                   [&](const FileCall&) { return next(MappedPath(path), length); });                         \
    }

#define FTRUNCATE(NAME, OFFSET)                                                                              \
    int NAME(int descriptor, OFFSET length) noexcept                                                         \
    {                                                                                                        \
        NEXT(NAME);                                                                                          \
        return run(truncation(descriptorCall(Kind::Truncate, descriptor), length),                           \
                   [&](const FileCall&) { return next(descriptor, length); });                               \
    }

#define SYNC(NAME)                                                                                           \
    int NAME(int descriptor)                                                                                 \
    {                                                                                                        \
        NEXT(NAME);                                                                                          \
        return run(descriptorCall(Kind::Sync, descriptor),                                                   \
                   [&](const FileCall&) { return next(descriptor); });                                       \
    }

#define REMOVE(NAME)                                                                                         \
    int NAME(const char* path) noexcept                                                                      \
    {                                                                                                        \
        NEXT(NAME);                                                                                          \
        return run(pathCall(Kind::Remove, path), [&](const FileCall&) { return next(MappedPath(path)); });   \
    }

extern "C" {

// What the C library's headers turn open() and its variants into when they check arguments.
int __open_2(const char* path, int flags);                    // NOLINT(bugprone-reserved-identifier)
int __open64_2(const char* path, int flags);                  // NOLINT(bugprone-reserved-identifier)
int __openat_2(int directory, const char* path, int flags);   // NOLINT(bugprone-reserved-identifier)
int __openat64_2(int directory, const char* path, int flags); // NOLINT(bugprone-reserved-identifier)

int __open_2(const char* path, int flags)
{
    return open(path, flags);
}

int __open64_2(const char* path, int flags)
{
    return open64(path, flags);
}

int __openat_2(int directory, const char* path, int flags)
{
    return openat(directory, path, flags);
}

int __openat64_2(int directory, const char* path, int flags)
{
    return openat64(directory, path, flags);
}

OPEN(open)
OPEN(open64)
OPENAT(openat)
OPENAT(openat64)
CREAT(creat)
CREAT(creat64)
FOPEN(fopen)
FOPEN(fopen64)

TRANSFER(read, Kind::Read, void*)
TRANSFER(write, Kind::Write, const void*)
TRANSFER_AT(pread, Kind::Read, void*, off_t)
TRANSFER_AT(pread64, Kind::Read, void*, off64_t)
TRANSFER_AT(pwrite, Kind::Write, const void*, off_t)
TRANSFER_AT(pwrite64, Kind::Write, const void*, off64_t)
TRANSFER_PARTS(readv, Kind::Read)
TRANSFER_PARTS(writev, Kind::Write)

SEEK(lseek, off_t)
SEEK(lseek64, off64_t)
TRUNCATE(truncate, off_t)
TRUNCATE(truncate64, off64_t)
FTRUNCATE(ftruncate, off_t)
FTRUNCATE(ftruncate64, off64_t)
SYNC(fsync)
SYNC(fdatasync)

REMOVE(unlink)
REMOVE(rmdir)
REMOVE(remove)

// NOLINTBEGIN(bugprone-macro-parentheses): arguments come with their comma
#define LOOK(NAME, PARAMETERS, ARGUMENTS)                                                                    \
    int NAME(const char* path PARAMETERS) noexcept                                                           \
    {                                                                                                        \
        NEXT(NAME);                                                                                          \
        return run(pathCall(Kind::Look, path),                                                               \
                   [&](const FileCall&) { return next(MappedPath(path) ARGUMENTS); });                       \
    }
#define LOOK_AT(NAME, PARAMETERS, ARGUMENTS)                                                                 \
    int NAME(int directory, const char* path PARAMETERS) noexcept                                            \
    {                                                                                                        \
        NEXT(NAME);                                                                                          \
        return run(pathCall(Kind::Look, path),                                                               \
                   [&](const FileCall&) { return next(directory, MappedPath(path) ARGUMENTS); });            \
    }
// NOLINTEND(bugprone-macro-parentheses)
LOOK(stat, WITH(struct stat* status), WITH(status))
LOOK(stat64, WITH(struct stat64* status), WITH(status))
LOOK(lstat, WITH(struct stat* status), WITH(status))
LOOK(lstat64, WITH(struct stat64* status), WITH(status))
LOOK(access, WITH(int mode), WITH(mode))
LOOK_AT(fstatat, WITH(struct stat* status, int flags), WITH(status, flags))
LOOK_AT(fstatat64, WITH(struct stat64* status, int flags), WITH(status, flags))
LOOK_AT(statx, WITH(int flags, unsigned mask, struct statx* status), WITH(flags, mask, status))
LOOK_AT(faccessat, WITH(int mode, int flags), WITH(mode, flags))

// What the headers of a C library before 2.33 turn stat() and its variants into, with a version as the first
// argument. NOLINTBEGIN(bugprone-reserved-identifier)
int __xstat(int version, const char* path, struct stat* status) noexcept;
int __xstat64(int version, const char* path, struct stat64* status) noexcept;
int __lxstat(int version, const char* path, struct stat* status) noexcept;
int __lxstat64(int version, const char* path, struct stat64* status) noexcept;
LOOK_AT(__xstat, WITH(struct stat* status), WITH(status))
LOOK_AT(__xstat64, WITH(struct stat64* status), WITH(status))
LOOK_AT(__lxstat, WITH(struct stat* status), WITH(status))
LOOK_AT(__lxstat64, WITH(struct stat64* status), WITH(status))
// NOLINTEND(bugprone-reserved-identifier)

int unlinkat(int directory, const char* path, int flags) noexcept
{
    NEXT(unlinkat);
    return run(pathCall(Kind::Remove, path),
               [&](const FileCall&) { return next(directory, MappedPath(path), flags); });
}

int close(int descriptor)
{
    NEXT(close);
    return run(descriptorCall(Kind::Close, descriptor), [&](const FileCall&) { return next(descriptor); });
}

int fclose(FILE* stream)
{
    NEXT(fclose);
    return run(descriptorCall(Kind::Close, descriptorOf(stream)),
               [&](const FileCall&) { return next(stream); });
}

int mkdir(const char* path, mode_t mode) noexcept
{
    NEXT(mkdir);
    return run(pathCall(Kind::MakeDirectory, path),
               [&](const FileCall&) { return next(MappedPath(path), mode); });
}

int mkdirat(int directory, const char* path, mode_t mode) noexcept
{
    NEXT(mkdirat);
    return run(pathCall(Kind::MakeDirectory, path),
               [&](const FileCall&) { return next(directory, MappedPath(path), mode); });
}

int rename(const char* from, const char* to) noexcept
{
    NEXT(rename);
    FileCall call = pathCall(Kind::Rename, from);
    call.newPath = to;
    return run(call, [&](const FileCall&) { return next(MappedPath(from), MappedPath(to)); });
}

int renameat(int fromDirectory, const char* from, int toDirectory, const char* to) noexcept
{
    NEXT(renameat);
    FileCall call = pathCall(Kind::Rename, from);
    call.newPath = to;
    return run(call, [&](const FileCall&) {
        return next(fromDirectory, MappedPath(from), toDirectory, MappedPath(to));
    });
}

int renameat2(int fromDirectory, const char* from, int toDirectory, const char* to, unsigned flags) noexcept
{
    NEXT(renameat2);
    FileCall call = pathCall(Kind::Rename, from);
    call.newPath = to;
    return run(call, [&](const FileCall&) {
        return next(fromDirectory, MappedPath(from), toDirectory, MappedPath(to), flags);
    });
}

} // extern "C"
