// The module and the stores that a user might pick instead, behind one interface.
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QtGlobal>

#include <functional>
#include <memory>
#include <string>
#include <vector>

/// Keeps ten word cells or three images of areas. Every call returns when what it was given survives a power
/// cut.
class DurableStore
{
public:
    virtual ~DurableStore() = default;
    /// `cell` is 0 to 9.
    virtual void keepCell(int cell, ushort value) = 0;
    /// Keeps 65536, 131072 and 131072 bytes; `seed` makes them differ from the ones before.
    virtual void keepImages(int seed) = 0;
};

struct StoreKind
{
    std::string name;
    std::function<std::unique_ptr<DurableStore>()> make;
};

/// The module first, with "sync" as the one system call that it comes down to; then the peers, then the
/// module with "sync" run through the shell.
const std::vector<StoreKind>& storeKinds();

std::unique_ptr<DurableStore> makeModuleStore(void (*sync)());
std::unique_ptr<DurableStore> makeSqliteStore();
std::unique_ptr<DurableStore> makeLmdbStore();
std::unique_ptr<DurableStore> makeQSettingsStore();

/// What keepImages() keeps, by image.
const std::vector<std::vector<char>>& imagesToKeep(int seed);

/// Ends the program: a store that cannot do its job has no figure.
[[noreturn]] void storeFailed(const char* what, const char* why);
