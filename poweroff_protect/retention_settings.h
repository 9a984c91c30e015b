// Reads what a project says about retention, through the runtime's configuration-tree functions alone.
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
    qint16 saveTimeMinutes; ///< 5 where the project has none; the low 16 bits of what it has
};

/// The object "DataRetention" of a project; null when there is none.
object* retentionObject(object* project);
/// What the properties and the first child of `retention`, which must not be null, come to.
RetentionSettings readRetentionSettings(object* retention);

/// The entry that a child of "DataRetention" describes. What is missing is a null text or 0.
structMaintenance readRetentionEntry(object* child);
