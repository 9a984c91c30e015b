// Reads the retention settings through the same calls as the module.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/project_settings.h"

#include "project_tree/project_reader.h"
#include "tools/retention_core/refusal.h"

#include <QtCore/QFileInfo>

#include <algorithm>

namespace {

ProjectEntry readEntry(object* node, int number)
{
    ProjectEntry entry;
    entry.number = number;
    entry.name = node->name;
    entry.hasSource = object_get_child(node, "sourceAddress") != nullptr;
    entry.configured = readRetentionEntry(node);
    entry.area = areaNamed(entry.areaName());
    return entry;
}

} // namespace

QString ProjectEntry::text() const
{
    return QStringLiteral("entry %1 \"%2\"").arg(number).arg(name);
}

ProjectSettings readSettings(object* project)
{
    ProjectSettings settings;
    settings.remarks = propertyRemarks(project);
    object* const retention = retentionObject(project);
    if (!retention)
        return settings;
    settings.retentionObjects =
        static_cast<int>(std::count_if(project->children.begin(), project->children.end(),
                                       [=](const auto& child) { return child->name == retention->name; }));
    const property* const saveTime = object_get_property(retention, "Save Time");
    if (saveTime && !saveTime->isText)
        settings.saveTime = saveTime->number;
    const RetentionSettings meaning = readRetentionSettings(retention);
    settings.mode = meaning.mode;
    settings.saveTimeMinutes = meaning.saveTimeMinutes;
    for (object* node = object_first_child(retention); node; node = object_next(node))
        settings.entries.push_back(readEntry(node, static_cast<int>(settings.entries.size()) + 1));
    return settings;
}

ProjectSettings readSettings(const QString& projectFile)
{
    const QFileInfo info(projectFile);
    if (info.exists() && !info.isFile())
        throw Refusal(QStringLiteral("%1: is not a file; name the project's XML file").arg(projectFile));
    const ProjectReading reading = readProjectFile(projectFile);
    if (!reading.project)
        throw Refusal(reading.error);
    return readSettings(reading.project.get());
}

Words wordsOf(RetentionMode mode)
{
    switch (mode) {
    case RetentionMode::WholeAreas:
        return {"whole-area", QStringLiteral("whole areas")};
    case RetentionMode::PerAddress:
        return {"per-address", QStringLiteral("per-address entries")};
    case RetentionMode::None:
        break;
    }
    return {"none", QStringLiteral("no retention")};
}
