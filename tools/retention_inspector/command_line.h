// From the words of the command line to a report on standard output and an exit status.
// SPDX-License-Identifier: MIT
#ifndef TOOLS_RETENTION_INSPECTOR_COMMAND_LINE_H
#define TOOLS_RETENTION_INSPECTOR_COMMAND_LINE_H

#include <QtCore/QString>
#include <QtCore/QStringList>

struct Outcome
{
    int status = 0; ///< 0 clean, 1 findings, 2 usage or unreadable input
    QString out;    ///< for standard output
    QString err;    ///< for standard error
};

/// Runs the tool; `words` begins with the program's name.
Outcome runInspector(const QStringList& words);

#endif
