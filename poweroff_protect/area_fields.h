// Gathers the fields of a module object that belong to one area.
// SPDX-License-Identifier: MIT
#pragma once

#include "poweroff_protect/area_facts.h"
#include "poweroff_protect/poweroff_protect.h"

#include <array>

/// References into a module object, which must outlive them.
struct AreaFields
{
    const AreaFacts& facts;
    QList<MaintenanceFileInfo>& blocks; ///< empty unless in per-address mode
    QFileInfo& fileInfo;                ///< used in per-address mode only
    std::fstream& file;                 ///< the stream on the area's file

    /// In the order of areaFacts.
    static std::array<AreaFields, areaCount> of(poweroff_protect& module)
    {
        return {{{areaFacts[0], module.bitFileBlocks, module.bitFileInfo, module.bitFile},
                 {areaFacts[1], module.wordFileBlocks, module.wordFileInfo, module.wordFile},
                 {areaFacts[2], module.rwiFileBlocks, module.rwiFileInfo, module.rwiFile}}};
    }
};
