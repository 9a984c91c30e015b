// Models what a program does to the disk, and what the disk then holds.
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <map>
#include <set>
#include <vector>

/// The identity of a file, whatever its name.
using FileId = int;

/// One change of the disk, in the project directory. A write is one GrowTo, if it reaches past the end of the
/// file, and Data.
struct DiskOp
{
    enum class Kind
    {
        MakeDirectory, ///< the project directory itself
        Make,          ///< an empty file
        Rename,        ///< `name` to `newName`, over any file of that name
        Remove,
        SyncNames, ///< earlier changes of names are durable
        SyncFile,  ///< earlier changes in the file are durable; its name need not be
        SetLength, ///< truncates the file, or extends it with zeros
        GrowTo,    ///< `length` at least, by a write that begins at `offset`
        Data
    };
    Kind kind;
    FileId file = 0; ///< of Make and of operations in files
    QString name = {};
    QString newName = {};
    qint64 length = 0;
    qint64 offset = 0;
    QByteArray bytes = {}; ///< of Data; of GrowTo: old bytes of the medium that come with the length, or none

    bool isInFile() const { return kind >= Kind::SetLength; }
    QString text() const;
};

/// The pieces of the operation that a cut may keep or lose separately: Data and GrowTo by sectors of 512
/// bytes.
std::vector<DiskOp> atomsOf(const DiskOp& op, qint64 lengthBefore);
/// The GrowTo with old bytes of the medium for everything that its write covers.
DiskOp withStaleBytes(DiskOp growTo);

/// What a start finds: the directory and its files.
struct DiskImage
{
    bool directory = false;
    std::map<QString, QByteArray> files;
    std::set<QString> stale = {}; ///< files that end in old bytes of the medium

    std::size_t hash() const;
};

struct DiskFile
{
    QByteArray data; ///< may be longer than the file, when its length was lost, or shorter: the rest is zero
    qint64 length = 0;

    void apply(const DiskOp& op);
    QByteArray visible() const;
};

struct Disk
{
    bool directory = false;
    std::map<QString, FileId> names;
    std::map<FileId, DiskFile> files;

    void apply(const DiskOp& op);
    DiskImage image() const;
    /// Drops the bytes of files without a name that no pending operation concerns.
    void forgetNameless(const std::vector<DiskOp>& pending);
};
