// Watches, shortens and fails the file calls of everything in this process.
// SPDX-License-Identifier: MIT
//
// Part of the shared library `file_calls` (path_mapping.h says how it gets its place before the C library).
#pragma once

#include <sys/types.h>
#include <sys/uio.h>

/// One call, under its plain name or one of its others (open64(), openat(), creat(), ...).
struct FileCall
{
    enum class Kind
    {
        Open,       ///< open() and its kin
        StreamOpen, ///< fopen()
        Read,       ///< read(), readv(), pread()
        Write,      ///< write(), writev(), pwrite()
        Seek,
        Truncate, ///< truncate(), ftruncate()
        Sync,     ///< fsync(), fdatasync()
        Close,    ///< close(), fclose()
        MakeDirectory,
        Look, ///< stat(), statx(), access() and their kin
        Rename,
        Remove ///< unlink(), rmdir(), remove()
    };
    Kind kind;
    const char* path = nullptr;    ///< as the caller gave it; null when the call is about a descriptor
    const char* newPath = nullptr; ///< of a renaming
    int descriptor = -1;           ///< -1 when the call is about a path; after an opening, the new one
    int flags = 0;                 ///< of an opening, as for open()
    off64_t length = 0;            ///< bytes to move; the new length of a truncated file
    off64_t position = -1;         ///< where bytes are moved to or from; -1: at the descriptor's position
    const iovec* parts = nullptr;  ///< the memory of a transfer
    int partCount = 0;
};

/// What a test wants to know or change about file calls.
class FileCallHook
{
public:
    virtual ~FileCallHook() = default;

    /// Before the call. Returns 0 to let it through, or the errno with which it fails instead; a failing
    /// close() closes all the same, as on Linux. `call.length` of a transfer may be made smaller: then it
    /// comes short.
    virtual int before(FileCall& call)
    {
        (void)call;
        return 0;
    }
    /// After a call that was let through. `result` is what it answered; of an opening the descriptor, or -1.
    virtual void after(const FileCall& call, long long result)
    {
        (void)call;
        (void)result;
    }
};

/// From now on this hook is told of every call, null: none. It stays the caller's. Calls that a hook makes
/// itself are not told. For programs with one thread.
void setFileCallHook(FileCallHook* hook);
