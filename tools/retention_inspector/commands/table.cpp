// Names the commands: NAME is the constant NAMECommand that commands/NAME.cpp defines.
// SPDX-License-Identifier: MIT
#include "tools/retention_inspector/command.h"

#define RETENTION_INSPECTOR_COMMANDS(COMMAND)                                                                \
    COMMAND(layout)                                                                                          \
    COMMAND(show)                                                                                            \
    COMMAND(check)                                                                                           \
    COMMAND(migrate)                                                                                         \
    COMMAND(diff)                                                                                            \
    COMMAND(wear)                                                                                            \
    COMMAND(map)                                                                                             \
    COMMAND(export)                                                                                          \
    COMMAND(import)                                                                                          \
    COMMAND(compare)                                                                                         \
    COMMAND(report)

#define DECLARATION(NAME) extern const Command NAME##Command;
RETENTION_INSPECTOR_COMMANDS(DECLARATION)

const std::vector<const Command*>& commands()
{
#define ADDRESS(NAME) &NAME##Command,
    static const std::vector<const Command*> all = {RETENTION_INSPECTOR_COMMANDS(ADDRESS)};
    return all;
}

const Command* commandNamed(const QString& name)
{
    for (const Command* command : commands())
        if (name == QLatin1String(command->name))
            return command;
    return nullptr;
}

QHash<QString, QString> usualOptions(const Command& command)
{
    QHash<QString, QString> options;
    for (const Option& option : command.options)
        if (option.usual)
            options.insert(QLatin1String(option.name), QLatin1String(option.usual));
    return options;
}

std::optional<Tags> tagsOf(const Inputs& inputs)
{
    return inputs.has("tags") ? std::optional(readTags(inputs.option("tags"))) : std::nullopt;
}
