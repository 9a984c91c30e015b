// Opens the three retention files of a directory, and creates a directory with three new ones.
// SPDX-License-Identifier: MIT
#pragma once

#include "poweroff_protect/area_facts.h"

#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtCore/QIODevice>
#include <QtCore/QString>

#include <array>
#include <functional>
#include <memory>

struct RetentionFile
{
    enum class State
    {
        Missing,
        Unreadable, ///< not a regular file, or it cannot be opened
        Readable
    };

    const AreaFacts* area = nullptr;
    QString path;
    State state = State::Missing;
    QString error;                     ///< why it is Unreadable
    qint64 size = 0;                   ///< bytes
    std::shared_ptr<QIODevice> device; ///< open when Readable

    /// The bytes from `offset` on: up to `length`, fewer where the file ends, none before its beginning.
    QByteArray read(qint64 offset, qint64 length) const;
};

/// In the order of areaFacts.
using RetentionFiles = std::array<RetentionFile, areaCount>;

/// Opens the files of a directory, which need not have any of them; anything else in their place does no
/// harm. Throws a Refusal when there is no such directory or it cannot be searched.
RetentionFiles openRetentionFiles(const QString& directory);

/// Throws a Refusal when one of the files is Unreadable.
void requireReadable(const RetentionFiles& files);

/// Creates `directory`, which must be absent or empty, with the three files. It appears complete and on the
/// disk, or not at all: the files are made in a hidden folder next to it, which then replaces it in one step.
/// `fill` gets each file open and empty, and returns false when it cannot be written. Throws a Refusal, also
/// for the name "-", which elsewhere is standard output.
void makeRetentionFiles(const QString& directory,
                        const std::function<bool(const AreaFacts& area, QFile& file)>& fill);
