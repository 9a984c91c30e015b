// Interposes the calls that look at paths, or change them in ways that no hook asks for: their paths are
// mapped.
// SPDX-License-Identifier: MIT
#include "simulated_host/file_calls/next_function.h"
#include "simulated_host/file_calls/path_mapping.h"

#include <cstdlib>
#include <cstring>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/statvfs.h>
#include <sys/time.h>
#include <unistd.h>
#include <utime.h>

// NOLINTBEGIN(bugprone-macro-parentheses): arguments come with their comma
/// NAME(path, ...).
#define PATH_CALL(RESULT, NAME, PARAMETERS, ARGUMENTS)                                                       \
    RESULT NAME(const char* path PARAMETERS) noexcept                                                        \
    {                                                                                                        \
        NEXT(NAME);                                                                                          \
        return next(MappedPath(path) ARGUMENTS);                                                             \
    }
/// NAME(directory, path, ...).
#define AT_CALL(RESULT, NAME, PARAMETERS, ARGUMENTS)                                                         \
    RESULT NAME(int directory, const char* path PARAMETERS) noexcept                                         \
    {                                                                                                        \
        NEXT(NAME);                                                                                          \
        return next(directory, MappedPath(path) ARGUMENTS);                                                  \
    }
#define NOTHING
// NOLINTEND(bugprone-macro-parentheses)

namespace {

/// A path that the C library returned, as the process knows it.
ssize_t unmapped(char* answer, ssize_t length, size_t room)
{
    return length < 0 ? length
                      : unmapPath(answer, static_cast<unsigned>(length), static_cast<unsigned>(room));
}

} // namespace

extern "C" {

PATH_CALL(int, statfs, WITH(struct statfs* status), WITH(status))
PATH_CALL(int, statfs64, WITH(struct statfs64* status), WITH(status))
PATH_CALL(int, statvfs, WITH(struct statvfs* status), WITH(status))
PATH_CALL(int, statvfs64, WITH(struct statvfs64* status), WITH(status))
PATH_CALL(int, euidaccess, WITH(int mode), WITH(mode))
PATH_CALL(int, eaccess, WITH(int mode), WITH(mode))
PATH_CALL(int, chmod, WITH(mode_t mode), WITH(mode))
AT_CALL(int, fchmodat, WITH(mode_t mode, int flags), WITH(mode, flags))
PATH_CALL(int, chown, WITH(uid_t user, gid_t group), WITH(user, group))
PATH_CALL(int, lchown, WITH(uid_t user, gid_t group), WITH(user, group))
AT_CALL(int, fchownat, WITH(uid_t user, gid_t group, int flags), WITH(user, group, flags))
PATH_CALL(int, utime, WITH(const utimbuf* times), WITH(times))
PATH_CALL(int, utimes, WITH(const timeval* times), WITH(times))
AT_CALL(int, utimensat, WITH(const timespec* times, int flags), WITH(times, flags))
PATH_CALL(int, mkfifo, WITH(mode_t mode), WITH(mode))
PATH_CALL(int, mknod, WITH(mode_t mode, dev_t device), WITH(mode, device))
PATH_CALL(int, chdir, NOTHING, NOTHING)

DIR* opendir(const char* path)
{
    NEXT(opendir);
    return next(MappedPath(path));
}

int link(const char* from, const char* to) noexcept
{
    NEXT(link);
    return next(MappedPath(from), MappedPath(to));
}

int linkat(int fromDirectory, const char* from, int toDirectory, const char* to, int flags) noexcept
{
    NEXT(linkat);
    return next(fromDirectory, MappedPath(from), toDirectory, MappedPath(to), flags);
}

// The kernel follows links by itself, so the target is mapped, too.
int symlink(const char* target, const char* path) noexcept
{
    NEXT(symlink);
    return next(MappedPath(target), MappedPath(path));
}

int symlinkat(const char* target, int directory, const char* path) noexcept
{
    NEXT(symlinkat);
    return next(MappedPath(target), directory, MappedPath(path));
}

ssize_t readlink(const char* path, char* buffer, size_t size) noexcept
{
    NEXT(readlink);
    return unmapped(buffer, next(MappedPath(path), buffer, size), size);
}

ssize_t readlinkat(int directory, const char* path, char* buffer, size_t size) noexcept
{
    NEXT(readlinkat);
    return unmapped(buffer, next(directory, MappedPath(path), buffer, size), size);
}

char* realpath(const char* path, char* resolved) noexcept
{
    NEXT(realpath);
    const MappedPath asked(path);
    char answer[PATH_MAX];
    if (!next(asked, answer))
        return nullptr;
    if (asked.isMapped()) // a caller that names the other directory itself gets that
        answer[unmapped(answer, static_cast<ssize_t>(std::strlen(answer)), sizeof answer - 1)] = '\0';
    if (!resolved)
        return strdup(answer);
    stpcpy(resolved, answer);
    return resolved;
}

} // extern "C"
