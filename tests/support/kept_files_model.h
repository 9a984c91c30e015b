// Models what the module must do to its files and to the panel's cells, on byte arrays and without its code.
// SPDX-License-Identifier: MIT
#pragma once

#include "simulated_host/memory_areas.h"
#include "tests/support/expected_project.h"

#include <QtCore/QByteArray>
#include <QtCore/QStringList>

#include <array>
#include <optional>
#include <utility>

/// A file and the module's stream on it.
struct ModelFile
{
    std::optional<QByteArray> bytes; ///< nothing: no such file
    bool open = false;
    bool failed = false; ///< the open stream no longer does anything
};

/// A panel's life as it must happen. The areas are the model's, not the panel's. `calls`, if not null, gets
/// the lines that the simulated host's call log must have for reads, writes and syncs.
class KeptFilesModel
{
public:
    KeptFilesModel(ExpectedProject retention, MemoryAreas& areas,
                   std::array<std::optional<QByteArray>, 3> files, QStringList* calls = nullptr);

    void open();
    void init();
    void cyclicRun();
    /// A change message whose name field holds these bytes.
    void change(const QByteArray& nameField, std::int32_t address);

    const std::optional<QByteArray>& file(std::size_t area) const { return files[area].bytes; }
    int syncs() const { return syncCount; }
    /// Whether the module's stream on the file is open; it stays open even when it has failed.
    bool isOpen(std::size_t area) const { return files[area].open; }
    /// Replaces a file that is not open, as another program might.
    void replaceFile(std::size_t area, std::optional<QByteArray> bytes)
    {
        files[area].bytes = std::move(bytes);
    }

private:
    void sync();
    MemoryArea& memory(std::size_t area) { return areas.all()[area]; }
    void restoreImage(std::size_t area);
    void makeFile(std::size_t area);
    void restoreBits();
    void restoreWords(std::size_t area);
    void writeBit(const ExpectedBlock& block, std::int32_t address);
    void writeWords(std::size_t area, const ExpectedBlock& block);

    ExpectedProject retention;
    MemoryAreas& areas;
    std::array<ModelFile, 3> files;
    QStringList* calls;
    bool ready = false;
    int syncCount = 0;
};
