// Models what the module must make of a project, rule by rule and without any of its code: mode, period,
// blocks and their places in the files.
// SPDX-License-Identifier: MIT
#pragma once

#include "project_tree/project_tree.h"

#include <QtCore/QString>

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

/// A retention entry as configured in the project.
struct ExpectedEntry
{
    QString link, block, number, type;
    std::int32_t station = 0;
    std::int32_t index = 0;
    std::int32_t length = 0;
    std::int32_t bitOrWord = 0;
    std::int32_t addressLength = 0;
};

/// A block: the entry whose address it keeps, its size and its place in the file.
struct ExpectedBlock
{
    ExpectedEntry entry;
    std::int32_t count;
    std::int32_t fileOffset;
    std::int32_t bitOffset;
};

struct ExpectedProject
{
    int mode = 0; ///< 0 none, 1 whole areas, 2 per-address
    bool saveAll = false;
    /// Different entries of one area begin at the same cell: their order, and so the blocks, are unspecified.
    bool isAmbiguous = false;
    std::int64_t periodMs = 0;                         ///< in mode 1
    std::array<std::vector<ExpectedEntry>, 3> entries; ///< in mode 2, sorted
    std::array<std::vector<ExpectedBlock>, 3> blocks;  ///< in mode 2
};

ExpectedProject expectedOf(const object& project);
