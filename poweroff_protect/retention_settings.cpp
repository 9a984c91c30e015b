// Reads the retention properties with their defaults and widths.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/retention_settings.h"

object* retentionObject(object* project)
{
    return object_get_child(project, "DataRetention");
}

RetentionSettings readRetentionSettings(object* retention)
{
    const auto number = [retention](const char* name, quint32 missing) {
        return property_get_value_type_uint32(object_get_property(retention, name), missing);
    };
    const bool saveAll = number("open Save all", 0) != 0;
    const qint16 minutes = static_cast<qint16>(number("Save Time", 5));
    if (saveAll)
        return {RetentionMode::WholeAreas, minutes};
    return {object_first_child(retention) ? RetentionMode::PerAddress : RetentionMode::None, minutes};
}

structMaintenance readRetentionEntry(object* child)
{
    object* const source = object_get_child(child, "sourceAddress");
    structMaintenance entry;
    entry.addressLength = object_get_property_value_type_int32(child, "addressLength", 0);
    entry.addressType = object_get_property_value_type_string(child, "addressType", QString());
    entry.address.link = object_get_property_value_type_string(source, "Link", QString());
    entry.address.block = object_get_property_value_type_string(source, "Block", QString());
    entry.address.number = object_get_property_value_type_string(source, "No", QString());
    entry.address.index = object_get_property_value_type_int32(source, "index", 0);
    entry.address.station = object_get_property_value_type_int32(source, "station", 0);
    entry.address.length = object_get_property_value_type_int32(source, "length", 0);
    entry.address.bitOrWord = object_get_property_value_type_int32(source, "Bit_or_Word", 0);
    return entry;
}
