// What the module must make of a project, worked out rule by rule and without any of its code: mode, period,
// blocks and their places in the files.
#ifndef TESTS_FUZZ_RETENTION_MODEL_H
#define TESTS_FUZZ_RETENTION_MODEL_H

#include "simulated_host/project_tree.h"

#include <QtCore/QString>

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

inline const char* const modelAreas[3] = {"LB", "LW", "RWI"};

/// A retention entry as the project has it.
struct ModelEntry
{
    QString link, block, number, type;
    std::int32_t station = 0;
    std::int32_t index = 0;
    std::int32_t length = 0;
    std::int32_t bitOrWord = 0;
    std::int32_t addressLength = 0;
};

/// A block: the entry that it began with and its place.
struct ModelBlock
{
    ModelEntry entry;
    std::int32_t count = 0;
    std::int32_t fileOffset = 0;
    std::int32_t bitOffset = 0;
};

struct RetentionModel
{
    int mode = 0; ///< 0 none, 1 whole areas, 2 per-address
    bool saveAll = false;
    std::int64_t periodMs = 0;                      ///< in mode 1
    std::array<std::vector<ModelEntry>, 3> entries; ///< in mode 2, sorted
    std::array<std::vector<ModelBlock>, 3> blocks;  ///< in mode 2
};

RetentionModel modelOf(const object& project);

/// The blocks of one area's entries in the order in which they stand, each in its place in the file.
std::vector<ModelBlock> modelBlocks(std::vector<ModelEntry> entries, bool bits);

/// Sums as the module has them: 32 bits that wrap.
inline std::int32_t plus(std::int32_t a, std::int32_t b)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}
inline std::int32_t minus(std::int32_t a, std::int32_t b)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

#endif
