// Holds the table of the three areas and looks areas up in it.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/area_facts.h"

const AreaFacts areaFacts[areaCount] = {
    {"LB", "maintenance-bit.dat", 1, 1, 65536, true, true},
    {"LW", "maintenance-word.dat", 0, 2, 131072, false, true},
    {"RWI", "maintenance-RWI.dat", 2, 5, 131072, false, false},
};

namespace {

template <typename Text> const AreaFacts* findArea(const Text& name)
{
    for (const AreaFacts& area : areaFacts)
        if (name == QLatin1String(area.name))
            return &area;
    return nullptr;
}

} // namespace

const AreaFacts* areaNamed(const QString& name)
{
    return findArea(name);
}

const AreaFacts* areaNamed(QLatin1String name)
{
    return findArea(name);
}
