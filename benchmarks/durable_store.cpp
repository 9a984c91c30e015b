// Lists the kinds of stores, and holds what they share.
// SPDX-License-Identifier: MIT
#include "benchmarks/durable_store.h"

#include "benchmarks/bench_host.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace {

/// Does what a "sync" of the retention files alone would do: fdatasync() on those that exist.
void synchroniseFiles()
{
    for (const char* const name : {"maintenance-bit.dat", "maintenance-word.dat", "maintenance-RWI.dat"}) {
        const int fd = open(filePath(name).constData(), O_RDONLY | O_CLOEXEC);
        if (fd >= 0 && (fdatasync(fd) != 0 || close(fd) != 0))
            storeFailed("module", "its files cannot be synchronised");
    }
}

} // namespace

const std::vector<StoreKind>& storeKinds()
{
    static const std::vector<StoreKind> kinds = {
        {"module", [](int cells) { return makeModuleStore(cells, [] { sync(); }); }},
        {"module_files", [](int cells) { return makeModuleStore(cells, synchroniseFiles); }},
        {"sqlite", makeSqliteStore},
        {"lmdb", makeLmdbStore},
        {"qsettings", makeQSettingsStore},
        {"two_files", makeTwoFileStore},
        {"fdatasync", makeFdatasyncStore},
        {"dsync", makeDsyncStore},
        {"module_shell",
         [](int cells) {
             return makeModuleStore(cells, [] {
                 if (std::system("sync") != 0)
                     storeFailed("module", "the shell cannot run sync");
             });
         }},
    };
    return kinds;
}

const StoreKind* storeKindNamed(const std::string& name)
{
    for (const StoreKind& kind : storeKinds())
        if (kind.name == name)
            return &kind;
    return nullptr;
}

const std::vector<std::vector<char>>& imagesToKeep(int seed)
{
    static std::vector<std::vector<char>> images = {std::vector<char>(65536), std::vector<char>(131072),
                                                    std::vector<char>(131072)};
    for (auto& image : images)
        for (std::size_t at = 0; at < image.size(); at += 512)
            image[at] = static_cast<char>(seed);
    return images;
}

void storeFailed(const char* what, const char* why)
{
    std::fprintf(stderr, "%s failed: %s\n", what, why);
    std::exit(1);
}
