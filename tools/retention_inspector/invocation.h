// One call of the tool, as understood from its arguments.
// SPDX-License-Identifier: MIT
#ifndef TOOLS_RETENTION_INSPECTOR_INVOCATION_H
#define TOOLS_RETENTION_INSPECTOR_INVOCATION_H

#include "tools/retention_inspector/report/report.h"

#include <QtCore/QHash>
#include <QtCore/QString>
#include <QtCore/QStringList>

struct Invocation
{
    QStringList arguments;           ///< without the command; as many as the command wants
    QHash<QString, QString> options; ///< those that were given, without the dashes
    Format format = Format::Text;

    bool has(const char* option) const { return options.contains(QLatin1String(option)); }
    QString option(const char* name) const { return options.value(QLatin1String(name)); }
};

/// Either a report or the reason why there is none.
struct CommandResult
{
    Report report;
    QString error; ///< what was wrong and what to do; empty for success
};

#endif
