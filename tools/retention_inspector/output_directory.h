// A directory that appears complete or not at all.
// SPDX-License-Identifier: MIT
#ifndef TOOLS_RETENTION_INSPECTOR_OUTPUT_DIRECTORY_H
#define TOOLS_RETENTION_INSPECTOR_OUTPUT_DIRECTORY_H

#include <QtCore/QString>
#include <QtCore/QTemporaryDir>

#include <memory>

/// Files are made in a hidden folder beside `path`; commit() gives it that name in one step. What is not
/// committed leaves nothing behind.
class OutputDirectory
{
public:
    /// Refuses a `path` that exists, unless it is an empty directory; error() then says so.
    explicit OutputDirectory(const QString& path);

    const QString& error() const { return errorText; } ///< empty as long as all is well

    /// Where to make the file of that name.
    QString filePath(const QString& name) const;

    /// Puts everything on the disk, then in its place. False, with error(), when something else has taken the
    /// name meanwhile or the disk fails.
    bool commit();

private:
    bool fail(const QString& message);

    QString target;
    QString errorText;
    std::unique_ptr<QTemporaryDir> folder;
};

#endif
