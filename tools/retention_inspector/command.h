// The commands: their names, arguments, options and help in one table, each with its function.
// SPDX-License-Identifier: MIT
#ifndef TOOLS_RETENTION_INSPECTOR_COMMAND_H
#define TOOLS_RETENTION_INSPECTOR_COMMAND_H

#include "tools/retention_inspector/invocation.h"

#include <vector>

struct OptionForm
{
    const char* name;  ///< "output" may also be given as -o
    const char* value; ///< name of its value; null for a switch
    const char* description;
};

struct CommandForm
{
    const char* name;
    QStringList arguments; ///< names of the arguments, all required
    const char* summary;
    const char* description;
    const char* examples; ///< one a line
    std::vector<OptionForm> options;
    CommandResult (*run)(const Invocation& invocation);
};

const std::vector<CommandForm>& commandForms();

#endif
