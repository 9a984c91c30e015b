// The table of the three areas and its look-ups.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/retention_area.h"

#include <cstring>

const RetentionArea RetentionArea::all[3] = {
    {"LB", "maintenance-bit.dat", &poweroff_protect::bitFile, &poweroff_protect::bitFileInfo,
     &poweroff_protect::bitFileBlocks, 1, 1, 65536, true, true},
    {"LW", "maintenance-word.dat", &poweroff_protect::wordFile, &poweroff_protect::wordFileInfo,
     &poweroff_protect::wordFileBlocks, 0, 2, 131072, false, true},
    {"RWI", "maintenance-RWI.dat", &poweroff_protect::rwiFile, &poweroff_protect::rwiFileInfo,
     &poweroff_protect::rwiFileBlocks, 2, 5, 131072, false, false},
};

namespace {

template <typename Matches> const RetentionArea* firstArea(Matches matches)
{
    for (const RetentionArea& area : RetentionArea::all)
        if (matches(area))
            return &area;
    return nullptr;
}

} // namespace

const RetentionArea* RetentionArea::named(const QString& name)
{
    return firstArea([&name](const RetentionArea& area) { return name == QLatin1String(area.name); });
}

const RetentionArea* RetentionArea::named(const char* name)
{
    return firstArea([name](const RetentionArea& area) { return std::strcmp(name, area.name) == 0; });
}

const RetentionArea* RetentionArea::withWholeAreaCode(int code)
{
    return firstArea([code](const RetentionArea& area) { return area.wholeAreaCode == code; });
}

const RetentionArea* RetentionArea::withPerAddressCode(int code)
{
    return firstArea([code](const RetentionArea& area) { return area.perAddressCode == code; });
}
