// Holds the table of the three areas and looks areas up in it.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/area_facts.h"

#include <cstring>

const AreaFacts areaFacts[areaCount] = {
    {"LB", "maintenance-bit.dat", 1, 1, 65536, true, true},
    {"LW", "maintenance-word.dat", 0, 2, 131072, false, true},
    {"RWI", "maintenance-RWI.dat", 2, 5, 131072, false, false},
};

namespace {

template <typename Matches> const AreaFacts* firstArea(Matches matches)
{
    for (const AreaFacts& area : areaFacts)
        if (matches(area))
            return &area;
    return nullptr;
}

} // namespace

const AreaFacts* areaNamed(const QString& name)
{
    return firstArea([&name](const AreaFacts& area) { return name == QLatin1String(area.name); });
}

const AreaFacts* areaNamed(const char* name)
{
    return firstArea([name](const AreaFacts& area) { return std::strcmp(name, area.name) == 0; });
}

const AreaFacts* areaWithWholeAreaCode(int code)
{
    return firstArea([code](const AreaFacts& area) { return area.wholeAreaCode == code; });
}

const AreaFacts* areaWithPerAddressCode(int code)
{
    return firstArea([code](const AreaFacts& area) { return area.perAddressCode == code; });
}
