// Keeps the table of mappings. In static memory and without allocation, because calls come before any object
// is constructed and after it is destroyed, and while allocations are made to fail.
// SPDX-License-Identifier: MIT
#include "simulated_host/file_calls/path_mapping.h"

#include <cstdlib>
#include <cstring>

namespace {

struct Mapping
{
    char from[64];
    char to[PATH_MAX];
};
Mapping mappings[4];
int count = 0;

/// Whether `path` is the directory or lies below it.
bool liesIn(const char* path, std::size_t length, const char* directory)
{
    const std::size_t prefix = std::strlen(directory);
    return length >= prefix && std::memcmp(path, directory, prefix) == 0 &&
           (length == prefix || path[prefix] == '/');
}

const Mapping* mappingOf(const char* path)
{
    const Mapping* found = nullptr;
    for (int k = 0; k < count; ++k)
        if (liesIn(path, std::strlen(path), mappings[k].from) &&
            (!found || std::strlen(mappings[k].from) > std::strlen(found->from)))
            found = &mappings[k];
    return found;
}

/// Copies an absolute path without empty parts, "." and "..", but keeps a trailing slash, which is
/// significant.
void copyClean(const char* path, char* clean)
{
    char* end = clean;
    while (*path) {
        while (*path == '/')
            ++path;
        const std::size_t length = std::strcspn(path, "/");
        if (length == 2 && path[0] == '.' && path[1] == '.') {
            while (end != clean && *--end != '/') {
            }
        } else if (length != 1 || path[0] != '.') {
            *end++ = '/';
            std::memcpy(end, path, length);
            end += length;
        }
        path += length;
    }
    *end = '\0';
}

__attribute__((constructor)) void mapFromEnvironment()
{
    if (const char* const directory = std::getenv(usrTavrinVariable))
        mapPath("/usr/tavrin", directory);
}

} // namespace

bool mapPath(const char* from, const char* to)
{
    int k = 0;
    while (k < count && std::strcmp(mappings[k].from, from) != 0)
        ++k;
    if (k == static_cast<int>(sizeof mappings / sizeof mappings[0]) ||
        std::strlen(from) >= sizeof mappings[k].from || std::strlen(to) >= sizeof mappings[k].to)
        return false;
    stpcpy(mappings[k].from, from);
    stpcpy(mappings[k].to, to);
    count = k == count ? k + 1 : count;
    return true;
}

MappedPath::MappedPath(const char* path) : text(path)
{
    // The kernel refuses a longer path.
    if (count == 0 || !path || path[0] != '/' || std::strlen(path) >= PATH_MAX)
        return;
    char clean[PATH_MAX + 1];
    copyClean(path, clean);
    const Mapping* const mapping = mappingOf(clean);
    if (!mapping)
        return;
    stpcpy(stpcpy(buffer, mapping->to), clean + std::strlen(mapping->from));
    text = buffer;
}

unsigned unmapPath(char* path, unsigned length, unsigned room)
{
    const Mapping* found = nullptr;
    for (int k = 0; k < count; ++k)
        if (liesIn(path, length, mappings[k].to) &&
            (!found || std::strlen(mappings[k].to) > std::strlen(found->to)))
            found = &mappings[k];
    if (!found)
        return length;
    const auto before = static_cast<unsigned>(std::strlen(found->to));
    const auto after = static_cast<unsigned>(std::strlen(found->from));
    const unsigned kept = length - before < room - after ? length - before : room - after;
    std::memmove(path + after, path + before, kept);
    std::memcpy(path, found->from, after);
    return after + kept;
}
