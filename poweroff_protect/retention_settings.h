// Reads a project's retention settings, through the runtime's configuration-tree functions alone.
// SPDX-License-Identifier: MIT
#pragma once

#include "define_header/address_records.h"
#include "host_interface/configuration_tree.h"

/// As in ExtendFuncModelBase::retentionMode.
enum class RetentionMode
{
    None = 0,
    WholeAreas = 1,
    PerAddress = 2
};

struct RetentionSettings
{
    RetentionMode mode;
    qint16 saveTimeMinutes; ///< the low 16 bits of the project's value; 5 when it has none
};

/// The object "DataRetention" of a project; null when there is none.
object* retentionObject(object* project);
/// The settings that the properties and the first child of `retention` give; `retention` must not be null.
RetentionSettings readRetentionSettings(object* retention);

/// The entry that a child of "DataRetention" describes. Missing properties are read as null strings or 0.
structMaintenance readRetentionEntry(object* child);
