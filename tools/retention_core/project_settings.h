// What a project says about retention: the mode, the save period and the entries as they are configured.
// SPDX-License-Identifier: MIT
#ifndef TOOLS_RETENTION_CORE_PROJECT_SETTINGS_H
#define TOOLS_RETENTION_CORE_PROJECT_SETTINGS_H

#include "define_header/address_records.h"
#include "poweroff_protect/area_facts.h"
#include "poweroff_protect/retention_settings.h"

#include <QtCore/QString>

#include <vector>

struct object;

/// One child of "DataRetention".
struct ProjectEntry
{
    int number = 0;                  ///< place among the children, from 1
    QString name;                    ///< of the entry object
    bool hasSource = false;          ///< there is a "sourceAddress"
    const AreaFacts* area = nullptr; ///< null when the area name is unknown
    QString addressType;
    int length = 0;    ///< number of cells as configured, any value
    _ADDRESS_ address; ///< as configured

    qint64 first() const { return address.index; }
    qint64 last() const { return first() + length - 1; } ///< below first() when the entry names no cell
};

struct ProjectSettings
{
    RetentionMode mode = RetentionMode::None;
    int retentionObjects = 0;          ///< number of "DataRetention" objects; the first one counts
    bool hasSaveTime = false;          ///< "Save Time" is there as a number
    quint32 saveTimeSetting = 5;       ///< "Save Time" as configured
    qint16 saveTimeMinutes = 5;        ///< what it means to the module
    std::vector<ProjectEntry> entries; ///< in the project's order; of no effect in whole-area mode

    qint64 periodMs() const { return qint64(60000) * saveTimeMinutes; }
};

/// `project` may be null. Never fails: what is missing or odd is shown by the result.
ProjectSettings readSettings(object* project);

/// Such as `entry 2 "recipe"`.
QString entryText(const ProjectEntry& entry);

#endif
