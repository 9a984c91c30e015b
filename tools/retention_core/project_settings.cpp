// Reading of the retention settings, through the same calls as the module.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/project_settings.h"

#include "project_tree/project_tree.h"

#include <algorithm>

namespace {

ProjectEntry readEntry(object* node, int number)
{
    object* const source = object_get_child(node, "sourceAddress");
    ProjectEntry entry;
    entry.number = number;
    entry.name = node->name;
    entry.hasSource = source != nullptr;
    entry.addressType = object_get_property_value_type_string(node, "addressType", QString());
    entry.length = object_get_property_value_type_int32(node, "addressLength", 0);
    entry.address.link = object_get_property_value_type_string(source, "Link", QString());
    entry.address.block = object_get_property_value_type_string(source, "Block", QString());
    entry.address.index = object_get_property_value_type_int32(source, "index", 0);
    entry.address.length = object_get_property_value_type_int32(source, "length", 0);
    entry.area = areaNamed(entry.address.block);
    return entry;
}

} // namespace

ProjectSettings readSettings(object* project)
{
    ProjectSettings settings;
    object* const retention = object_get_child(project, "DataRetention");
    if (!retention)
        return settings;
    settings.retentionObjects = static_cast<int>(
        std::count_if(project->children.begin(), project->children.end(),
                      [](const auto& child) { return child->name == QLatin1String("DataRetention"); }));
    property* const saveTime = object_get_property(retention, "Save Time");
    settings.hasSaveTime = saveTime && !saveTime->isText;
    settings.saveTimeSetting = property_get_value_type_uint32(saveTime, 5);
    settings.saveTimeMinutes = static_cast<qint16>(settings.saveTimeSetting);
    for (object* node = object_first_child(retention); node; node = object_next(node))
        settings.entries.push_back(readEntry(node, static_cast<int>(settings.entries.size()) + 1));
    if (property_get_value_type_uint32(object_get_property(retention, "open Save all"), 0) != 0)
        settings.mode = RetentionMode::WholeAreas;
    else if (!settings.entries.empty())
        settings.mode = RetentionMode::PerAddress;
    return settings;
}

QString entryText(const ProjectEntry& entry)
{
    return QStringLiteral("entry %1 \"%2\"").arg(entry.number).arg(entry.name);
}
