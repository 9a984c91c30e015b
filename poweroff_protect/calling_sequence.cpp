// Implements the runtime's calling sequence: opening and choice of mode, start-up, periodic save.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/area_fields.h"
#include "poweroff_protect/out_of_memory.h"
#include "poweroff_protect/poweroff_protect.h"
#include "poweroff_protect/retention_settings.h"

void poweroff_protect::extModelOpen(object* project, QString text, InterfaceComm* comm)
{
    projectObject = project;
    interfaceComm = comm;
    extModelParam = 10;
    extModelString = text;
    retentionMode = 0;

    object* const retention = retentionObject(projectObject);
    if (!retention)
        return;
    const RetentionSettings settings = readRetentionSettings(retention);
    retentionMode = static_cast<unsigned char>(settings.mode);
    saveAllEnabled = settings.mode == RetentionMode::WholeAreas;
    saveTimeMinutes = settings.saveTimeMinutes;

    if (saveAllEnabled) {
        const int period = 60000 * saveTimeMinutes; // any 16-bit value fits
        cycleRemainingMs = cyclePeriodMs = period;
        for (const AreaFields& area : AreaFields::of(*this))
            initFile(area.file, QLatin1String(area.facts.fileName), area.facts.wholeAreaCode);
    } else if (settings.mode == RetentionMode::PerAddress) {
        initAddrInfo();
    }
}

void poweroff_protect::extModelInit()
{
    // Even without per-address entries: the files are then created for empty block lists.
    if (!saveAllEnabled) {
        for (const AreaFields& area : AreaFields::of(*this))
            ranWithMemory([this, &area] {
                initFile(area.file, area.fileInfo, QLatin1String(area.facts.fileName), area.blocks,
                         area.facts.perAddressCode);
            });
    }
    modelReady = true;
}

int poweroff_protect::cyclicRun()
{
    if (!saveAllEnabled)
        return 0;
    for (const AreaFields& area : AreaFields::of(*this))
        writeFile(area.file, area.facts.wholeAreaCode);
    sys_base_do_system("sync");
    return 0;
}
