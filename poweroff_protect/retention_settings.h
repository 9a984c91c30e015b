// Reads what a project says about retention. The only access is through the runtime's configuration-tree
// functions. SPDX-License-Identifier: MIT
#ifndef POWEROFF_PROTECT_RETENTION_SETTINGS_H
#define POWEROFF_PROTECT_RETENTION_SETTINGS_H

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

/// The entry that a child of "DataRetention" describes. Missing properties are null texts and zeros; without
/// a "sourceAddress" the whole address is.
structMaintenance readRetentionEntry(object* child);

#endif
