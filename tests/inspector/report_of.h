// Runs a command of the inspector without its command line.
// SPDX-License-Identifier: MIT
#pragma once

#include "tools/retention_inspector/command.h"

#include <utility>
#include <vector>

/// The report of the command on these projects and files. Options not given have their defaults.
inline Report reportOf(const char* command, const std::vector<Layout>& projects,
                       std::vector<RetentionFiles> files = {},
                       const std::vector<std::pair<const char*, QString>>& options = {},
                       const QStringList& paths = {})
{
    const Command& known = *commandNamed(QLatin1String(command));
    Inputs inputs;
    for (const Layout& layout : projects)
        inputs.projects.push_back({QStringLiteral("project.xml"), layout});
    inputs.files = std::move(files);
    inputs.paths = paths;
    inputs.options = usualOptions(known);
    for (const auto& [name, value] : options)
        inputs.options.insert(QLatin1String(name), value);
    return known.run(inputs);
}

/// The value of the fact `key`; empty where there is none.
inline Value factOf(const Report& report, const char* key)
{
    for (const Fact& fact : report.facts)
        if (qstrcmp(fact.key, key) == 0)
            return fact.value;
    return QString();
}
