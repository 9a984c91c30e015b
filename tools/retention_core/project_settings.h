// Describes a project's retention settings: the mode, the save period and the entries as configured.
// SPDX-License-Identifier: MIT
#pragma once

#include "poweroff_protect/area_facts.h"
#include "poweroff_protect/retention_settings.h"
#include "tools/retention_core/cell_ranges.h"
#include "tools/retention_core/property_remarks.h"

#include <QtCore/QString>

#include <optional>
#include <vector>

/// One child of "DataRetention".
struct ProjectEntry
{
    int number = 0;                  ///< place among the children, from 1
    QString name;                    ///< of the entry object
    bool hasSource = false;          ///< there is a "sourceAddress"
    const AreaFacts* area = nullptr; ///< null when the area name is unknown
    structMaintenance configured;    ///< as the module reads it

    int length() const { return configured.addressLength; } ///< number of cells, any value
    qint64 first() const { return configured.address.index; }
    qint64 last() const { return first() + length() - 1; } ///< below first() when the entry names no cell
    CellRanges cells() const { return CellRanges({{first(), last()}}); }
    QString areaName() const { return configured.address.block; } ///< as configured
    QString text() const;                                         ///< such as `entry 2 "recipe"`
};

struct ProjectSettings
{
    RetentionMode mode = RetentionMode::None;
    int retentionObjects = 0;          ///< number of "DataRetention" objects; the first one counts
    std::optional<quint32> saveTime;   ///< "Save Time" as configured; nothing when it is not set as a number
    qint16 saveTimeMinutes = 0;        ///< the minutes that the module derives from it
    std::vector<ProjectEntry> entries; ///< in the project's order; without effect in whole-area mode
    std::vector<PropertyRemark> remarks; ///< where the module does not read it as it is written

    qint64 periodMs() const { return qint64(60000) * saveTimeMinutes; }
};

/// `project` may be null. Never fails: the result shows what is missing or odd.
ProjectSettings readSettings(object* project);

/// Reads an XML file. Throws a Refusal when it cannot be read.
ProjectSettings readSettings(const QString& projectFile);

/// A fixed key for scripts, and the same in words for people.
struct Words
{
    const char* key;
    QString text;
};

/// Such as "whole-area" and "whole areas".
Words wordsOf(RetentionMode mode);
