// The calling sequence of the runtime: reading the retention settings, choosing the mode, the periodic save.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/poweroff_protect.h"
#include "poweroff_protect/retention_area.h"

#include <new>

void poweroff_protect::extModelOpen(object* project, QString text, InterfaceComm* comm)
{
    projectObject = project;
    interfaceComm = comm;
    extModelParam = 10;
    extModelString = text;
    retentionMode = 0;

    object* const retention = object_get_child(projectObject, "DataRetention");
    if (!retention)
        return;
    saveAllEnabled = property_get_value_type_uint32(object_get_property(retention, "open Save all"), 0) != 0;
    saveTimeMinutes =
        static_cast<qint16>(property_get_value_type_uint32(object_get_property(retention, "Save Time"), 5));

    if (saveAllEnabled) {
        retentionMode = 1;
        const int period = 60000 * saveTimeMinutes; // any 16-bit value fits
        cycleRemainingMs = period;
        cyclePeriodMs = period;
        for (const RetentionArea& area : RetentionArea::all)
            initFile(this->*area.file, QLatin1String(area.fileName), area.wholeAreaCode);
    } else if (object_first_child(retention)) {
        retentionMode = 2;
        initAddrInfo();
    }
}

void poweroff_protect::extModelInit()
{
    // Without per-address entries too: the files are then made for empty block lists.
    if (!saveAllEnabled) {
        for (const RetentionArea& area : RetentionArea::all) {
            try {
                initFile(this->*area.file, this->*area.fileInfo, QLatin1String(area.fileName),
                         this->*area.blocks, area.perAddressCode);
            } catch (const std::bad_alloc&) {
                // Without memory this file is not restored; the other files go on.
            }
        }
    }
    modelReady = true;
}

int poweroff_protect::cyclicRun()
{
    if (!saveAllEnabled)
        return 0;
    for (const RetentionArea& area : RetentionArea::all)
        writeFile(this->*area.file, area.wholeAreaCode);
    sys_base_do_system("sync");
    return 0;
}
