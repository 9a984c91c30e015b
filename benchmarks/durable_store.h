// Puts the module, and the stores that a user might choose instead, behind one interface.
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QtGlobal>

#include <functional>
#include <memory>
#include <string>
#include <vector>

/// Keeps word cells or three images of areas. Every call returns once its values would survive a power cut.
class DurableStore
{
public:
    virtual ~DurableStore() = default;
    /// `cell` is below the number of cells that the store was made for.
    virtual void keepCell(int cell, ushort value) = 0;
    /// Keeps 65536, 131072 and 131072 bytes; `seed` makes them differ from the previous ones.
    virtual void keepImages(int seed) = 0;
};

using StorePtr = std::unique_ptr<DurableStore>;

struct StoreKind
{
    std::string name;
    std::function<StorePtr(int cells)> make;
};

/// First the module with "sync" as a single system call; the module with a "sync" of its own files alone;
/// then the other stores; then the module with "sync" run through the shell.
const std::vector<StoreKind>& storeKinds();
/// Null for an unknown name.
const StoreKind* storeKindNamed(const std::string& name);

// All files are in the project directory; files of earlier stores are overwritten.
StorePtr makeModuleStore(int cells, void (*sync)());
StorePtr makeSqliteStore(int cells);
StorePtr makeLmdbStore(int cells);
StorePtr makeQSettingsStore(int cells); ///< syncs file and directory
/// Writes each value or image to its place in a file, followed by fdatasync().
StorePtr makeFdatasyncStore(int cells);
/// The same with O_DSYNC, which makes every write wait for the medium.
StorePtr makeDsyncStore(int cells);
/// Writes all values with a checksum to a second file and renames it over the first.
StorePtr makeTwoFileStore(int cells);

/// The images that keepImages() keeps.
const std::vector<std::vector<char>>& imagesToKeep(int seed);

/// Ends the program, because a store that fails has no figure.
[[noreturn]] void storeFailed(const char* what, const char* why);
