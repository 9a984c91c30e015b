// What commands read: projects, directories of retention files, selections of cells.
// SPDX-License-Identifier: MIT
#ifndef TOOLS_RETENTION_INSPECTOR_INPUTS_H
#define TOOLS_RETENTION_INSPECTOR_INPUTS_H

#include "tools/retention_inspector/invocation.h"
#include "tools/retention_inspector/show_report.h"
#include "tools/retention_inspector/wear.h"

/// Each has either its value or the reason why there is none.
struct LayoutInput
{
    Layout layout;
    QString error;
};
struct FilesInput
{
    RetentionFiles files;
    QString error;
};
struct SelectionInput
{
    Selection selection;
    QString error;
};
struct WearInput
{
    WearQuestion question;
    QString error;
};

/// What a file that cannot be read means to a command.
enum class Unreadable
{
    IsAnError,
    IsAFinding
};

LayoutInput readLayout(const QString& projectFile);
FilesInput readFiles(const QString& directory, Unreadable unreadable);
/// From the options "area" and "address".
SelectionInput readSelection(const Invocation& invocation);
/// From the options of "wear".
WearInput readWearQuestion(const Invocation& invocation);

#endif
