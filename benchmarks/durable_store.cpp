// The kinds of stores, and what they share.
// SPDX-License-Identifier: MIT
#include "benchmarks/durable_store.h"

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

const std::vector<StoreKind>& storeKinds()
{
    static const std::vector<StoreKind> kinds = {
        {"module", [] { return makeModuleStore([] { sync(); }); }},
        {"sqlite", makeSqliteStore},
        {"lmdb", makeLmdbStore},
        {"qsettings", makeQSettingsStore},
        {"module_shell",
         [] {
             return makeModuleStore([] {
                 if (std::system("sync") != 0)
                     storeFailed("module", "the shell cannot run sync");
             });
         }},
    };
    return kinds;
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
