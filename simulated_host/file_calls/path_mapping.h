// Shows this process other directories in place of fixed ones, by changing the paths that it passes to the C
// library.
// SPDX-License-Identifier: MIT
//
// Part of the shared library `file_calls`, which comes before the C library in programs that link it, and can
// be preloaded (LD_PRELOAD) into others. QtCore, the C++ library and unmodified modules all go through it. It
// needs no privileges. It cannot change the targets of symbolic links that others made, nor system calls made
// without the C library.
#pragma once

#include <climits>

/// Makes `to` and everything below it appear at `from`. Both are absolute, without "." and "..", and no
/// longer than PATH_MAX. Of several mappings, the one with the longest `from` applies; a mapping with the
/// same `from` replaces the earlier one. False when there is no room for more.
///
/// A program into which the library is preloaded gets its mapping of "/usr/tavrin" from the environment
/// variable `usrTavrinVariable`.
bool mapPath(const char* from, const char* to);
inline const char* const usrTavrinVariable = "PRIVATE_USR_TAVRIN";

/// A path as passed to the C library. `path` may be null and must outlive this object.
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

/// Turns a path that the C library returned, of `length` characters, back into the one that the process is to
/// see. Returns the new length; needs and writes no terminating zero.
unsigned unmapPath(char* path, unsigned length, unsigned room);
