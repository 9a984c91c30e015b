// What the module must do to its files and to the panel's cells, worked out on byte arrays without its code.
// SPDX-License-Identifier: MIT
#pragma once

#include "simulated_host/memory_areas.h"
#include "tests/support/expected_project.h"

#include <QtCore/QByteArray>

#include <array>
#include <optional>

/// A file and the module's stream on it.
struct ModelFile
{
    std::optional<QByteArray> bytes; ///< nothing: no such file
    bool open = false;
    bool failed = false; ///< the open stream does nothing any more
};

/// A panel's life as it must go. The areas are those of the account, not of the panel.
class KeptFilesModel
{
public:
    KeptFilesModel(ExpectedProject retention, MemoryAreas& areas,
                   std::array<std::optional<QByteArray>, 3> files);

    void open();
    void init();
    void cyclicRun();
    /// A change message whose name field holds these bytes.
    void change(const QByteArray& nameField, std::int32_t address);

    const std::optional<QByteArray>& file(std::size_t area) const { return files[area].bytes; }
    int syncs() const { return syncCount; }

private:
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
    bool ready = false;
    int syncCount = 0;
};
