// Shows other directories to this process in the place of fixed ones, by changing the paths that it asks the
// C library for.
// SPDX-License-Identifier: MIT
//
// Part of the shared library `file_calls`, which stands before the C library in a program that links it, or
// is preloaded into one (LD_PRELOAD) that does not: QtCore, the C++ library and unmodified modules all go
// through it. It needs no privilege. What it cannot change is what the kernel resolves by itself: the targets
// of symbolic links that others made, and system calls made without the C library.
#pragma once

#include <climits>

/// From now on `to` lies at `from`, with everything below. Both are absolute, without "." and "..", and no
/// longer than PATH_MAX. Of several mappings the one with the longest `from` counts; one of the same `from`
/// takes the place of the earlier one. False when there is no room for more.
///
/// A program into which the library is preloaded gets its mapping of "/usr/tavrin" from the environment
/// variable `usrTavrinVariable`.
bool mapPath(const char* from, const char* to);
inline const char* const usrTavrinVariable = "PRIVATE_USR_TAVRIN";

/// A path as the C library is to see it. `path` may be null and must outlive this.
class MappedPath
{
public:
    explicit MappedPath(const char* path);
    MappedPath(const MappedPath&) = delete;
    MappedPath& operator=(const MappedPath&) = delete;
    operator const char*() const { return text; }
    bool isMapped() const { return text == buffer; }

private:
    const char* text;
    char buffer[2 * PATH_MAX];
};

/// Turns a path that the C library answered with, of `length` characters, back into what the process is to
/// see; returns its new length. No zero byte is needed or written.
unsigned unmapPath(char* path, unsigned length, unsigned room);
