// Watches, shortens or fails the file calls of everything in this process.
// SPDX-License-Identifier: MIT
//
// Part of the shared library `file_calls` (path_mapping.h says how it is placed before the C library).
#pragma once

#include <sys/types.h>
#include <sys/uio.h>

/// One call, by its plain name or a variant (open64(), openat(), creat(), ...).
struct FileCall
{
    enum class Kind
    {
        Open,       ///< open() and its variants
        StreamOpen, ///< fopen()
        Read,       ///< read(), readv(), pread()
        Write,      ///< write(), writev(), pwrite()
        Seek,
        Truncate, ///< truncate(), ftruncate()
        Sync,     ///< fsync(), fdatasync()
        Close,    ///< close(), fclose()
        MakeDirectory,
        Look, ///< stat(), statx(), access() and their variants
        Rename,
        Remove ///< unlink(), rmdir(), remove()
    };
    Kind kind;
    const char* path = nullptr;    ///< as the caller passed it; null when the call is about a descriptor
    const char* newPath = nullptr; ///< of a rename
    int descriptor = -1;           ///< -1 when the call is about a path; after an open, the new one
    int flags = 0;                 ///< of an open, as for open()
    off64_t length = 0;            ///< bytes to move; the new length of a truncated file
    off64_t position = -1;         ///< of a transfer in the file; -1: at the descriptor's position
    const iovec* parts = nullptr;  ///< the memory of a transfer
    int partCount = 0;
};

/// Observes and changes file calls for a test.
class FileCallHook
{
public:
    virtual ~FileCallHook() = default;

    /// Runs before the call. Returns 0 to let it through, or the errno with which it fails instead; a failing
    /// close() still closes, as on Linux. It may reduce `call.length` to cut a transfer short.
    virtual int before(FileCall& call)
    {
        (void)call;
        return 0;
    }
    /// Runs after a call that was let through. `result` is the call's return value; of an open, the
    /// descriptor or -1.
    virtual void after(const FileCall& call, long long result)
    {
        (void)call;
        (void)result;
    }
};

/// Passes every call to this hook from now on; null ends that. The caller owns the hook. Calls that a hook
/// makes itself are not passed. For single-threaded programs.
void setFileCallHook(FileCallHook* hook);
