// Describes a command: arguments, options and help, and the function that runs it. Each command is in the
// file of its name in commands/.
// SPDX-License-Identifier: MIT
#pragma once

#include "tools/retention_core/layout.h"
#include "tools/retention_core/retention_files.h"
#include "tools/retention_core/tags.h"
#include "tools/retention_inspector/report/report.h"

#include <QtCore/QHash>
#include <QtCore/QStringList>

#include <optional>
#include <vector>

/// An argument that a command requires, and what is read from it before the command runs.
struct Argument
{
    enum class Kind
    {
        Project,      ///< an XML file
        Files,        ///< a directory of retention files; refused when a file cannot be read
        FilesAsFound, ///< the same, but the command itself handles files that cannot be read
        Path          ///< whatever the command opens itself
    };
    enum class Count
    {
        One,
        AtMostOne, ///< only for the last argument
        AtLeastOne ///< only for the last argument
    };

    const char* name; ///< in the help
    Kind kind;
    Count count = Count::One;
};

struct Option
{
    enum class Kind
    {
        Optional,
        Required,  ///< shown in the usage line
        Repeatable ///< may be given several times; a command gets the values joined by commas
    };

    const char* name;            ///< "output" may also be given as -o
    const char* value;           ///< name of its value; null for a switch
    const char* description;     ///< in the help, which adds the default
    const char* usual = nullptr; ///< the default value; null for none
    Kind kind = Kind::Optional;
};

/// What a command works on.
struct Inputs
{
    struct Project
    {
        QString path;
        Layout layout;
    };

    std::vector<Project> projects;     ///< in the order of the arguments
    std::vector<RetentionFiles> files; ///< in the order of the arguments
    QStringList paths;                 ///< in the order of the arguments
    QHash<QString, QString> options;   ///< those given and those with a default, without the dashes

    const Layout& layout() const { return projects.front().layout; }
    bool has(const char* option) const { return options.contains(QLatin1String(option)); }
    QString option(const char* name) const { return options.value(QLatin1String(name)); }
};

struct Command
{
    const char* name;
    std::vector<Argument> arguments;
    const char* summary;
    const char* description;
    const char* examples; ///< one per line, without the names of tool and command
    std::vector<Option> options;
    Report (*run)(const Inputs& inputs); ///< throws a Refusal
};

/// All commands, in the order in which the help names them.
const std::vector<const Command*>& commands();

/// The command of that name; null for none.
const Command* commandNamed(const QString& name);

/// The default values of the command's options.
QHash<QString, QString> usualOptions(const Command& command);

/// The tags that the option "tags" names; none without it. Throws a Refusal.
std::optional<Tags> tagsOf(const Inputs& inputs);
