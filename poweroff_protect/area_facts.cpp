// Holds the table of the three areas and looks areas up in it.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/area_facts.h"

#include <cstring>

const AreaFacts areaFacts[areaCount] = {
    {"LB", "maintenance-bit.dat", 1, 1, 65536, true, true},
    {"LW", "maintenance-word.dat", 0, 2, 131072, false, true},
    {"RWI", "maintenance-RWI.dat", 2, 5, 131072, false, false},
};

const AreaFacts* areaNamed(const QString& name)
{
    for (const AreaFacts& area : areaFacts)
        if (name == QLatin1String(area.name))
            return &area;
    return nullptr;
}

const AreaFacts* areaNamed(const char* name)
{
    for (const AreaFacts& area : areaFacts)
        if (std::strcmp(name, area.name) == 0)
            return &area;
    return nullptr;
}
