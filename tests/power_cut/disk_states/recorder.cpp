// Turns file calls into operations on the disk.
// SPDX-License-Identifier: MIT
#include "tests/power_cut/disk_states/recorder.h"

#include "simulated_host/file_calls/file_calls.h"
#include "simulated_host/private_directory.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <cstring>
#include <fcntl.h>
#include <map>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

struct Recording
{
    std::function<void(const DiskOp&)> sink; ///< null: nothing is recorded
    std::map<ino_t, FileId> ids;
    FileId lastId = 0;
};
Recording recording;

/// The name in the project directory; null outside it, and when nothing is recorded.
const char* recordedName(const char* path)
{
    const std::size_t length = std::strlen(fixedProjectDirectory);
    if (!recording.sink || std::strncmp(path, fixedProjectDirectory, length) != 0 || path[length] != '/')
        return nullptr;
    return path + length + 1;
}

ino_t directoryInode()
{
    struct stat64 directory = {};
    return stat64(fixedProjectDirectory, &directory) == 0 ? directory.st_ino : 0;
}

FileId newId(const struct stat64& file)
{
    return recording.ids[file.st_ino] = ++recording.lastId;
}

/// The recorded file behind a descriptor; null for any other.
const FileId* recordedFile(int descriptor, struct stat64& file)
{
    if (!recording.sink || fstat64(descriptor, &file) != 0 || !S_ISREG(file.st_mode))
        return nullptr;
    const auto found = recording.ids.find(file.st_ino);
    return found == recording.ids.end() ? nullptr : &found->second;
}

void recordLength(FileId file, qint64 length)
{
    recording.sink({DiskOp::Kind::SetLength, file, {}, {}, length});
}

void recordData(FileId file, qint64 lengthBefore, qint64 offset, const QByteArray& bytes)
{
    const qint64 end = offset + bytes.size();
    if (end > lengthBefore)
        recording.sink({DiskOp::Kind::GrowTo, file, {}, {}, end, offset});
    recording.sink({DiskOp::Kind::Data, file, {}, {}, 0, offset, bytes});
}

/// Checks files before a call, and records what the call did to them.
class RecordingHook : public FileCallHook
{
public:
    int before(FileCall& call) override
    {
        file = {};
        name = call.path ? recordedName(call.path) : nullptr;
        existed = name && stat64(call.path, &file) == 0;
        id = call.path ? nullptr : recordedFile(call.descriptor, file);
        position = call.position;
        if (call.kind == Kind::Write && id && position < 0)
            position = fcntl(call.descriptor, F_GETFL) & O_APPEND ? file.st_size
                                                                  : lseek64(call.descriptor, 0, SEEK_CUR);
        return 0;
    }

    void after(const FileCall& call, long long result) override
    {
        switch (call.kind) {
        case Kind::Open:
        case Kind::StreamOpen:
            return recordOpen(call);
        case Kind::Write:
            if (id && result > 0)
                recordData(*id, file.st_size, position, bytesOf(call, result));
            return;
        case Kind::Truncate:
            if (result == 0 && id)
                recordLength(*id, call.length);
            else if (result == 0 && existed)
                recordLength(recording.ids.at(file.st_ino), call.length);
            return;
        case Kind::Sync:
            if (result == 0 && id)
                recording.sink({DiskOp::Kind::SyncFile, *id});
            else if (result == 0 && recording.sink && S_ISDIR(file.st_mode) &&
                     file.st_ino == directoryInode())
                recording.sink({DiskOp::Kind::SyncNames});
            return;
        case Kind::MakeDirectory:
            if (result == 0 &&
                QDir::cleanPath(QString::fromLocal8Bit(call.path)) == QLatin1String(fixedProjectDirectory))
                recording.sink({DiskOp::Kind::MakeDirectory});
            return;
        case Kind::Rename:
            if (const char* const newName = recordedName(call.newPath); result == 0 && name && newName)
                recording.sink(
                    {DiskOp::Kind::Rename, 0, QString::fromLocal8Bit(name), QString::fromLocal8Bit(newName)});
            return;
        case Kind::Remove:
            if (result == 0 && name)
                recording.sink({DiskOp::Kind::Remove, 0, QString::fromLocal8Bit(name)});
            return;
        default:
            return;
        }
    }

private:
    using Kind = FileCall::Kind;

    void recordOpen(const FileCall& call)
    {
        struct stat64 opened = {};
        if (!name || stat64(call.path, &opened) != 0 || !S_ISREG(opened.st_mode))
            return;
        if (!existed)
            recording.sink({DiskOp::Kind::Make, newId(opened), QString::fromLocal8Bit(name)});
        else if ((call.flags & O_TRUNC) && opened.st_size == 0)
            recordLength(recording.ids.at(opened.st_ino), 0);
    }

    static QByteArray bytesOf(const FileCall& call, long long written)
    {
        QByteArray bytes;
        for (int k = 0; k < call.partCount; ++k)
            bytes.append(static_cast<const char*>(call.parts[k].iov_base),
                         static_cast<int>(call.parts[k].iov_len));
        bytes.truncate(static_cast<int>(written));
        return bytes;
    }

    // As they were before the call.
    struct stat64 file = {};
    const char* name = nullptr; ///< in the project directory; null outside of it
    bool existed = false;
    const FileId* id = nullptr; ///< of the descriptor's file
    off64_t position = -1;
};
RecordingHook hook;

} // namespace

Recorder::Recorder(std::function<void(const DiskOp&)> sink)
{
    const DiskImage image = readProjectDirectory();
    recording = {};
    initial.directory = image.directory;
    for (const auto& [name, bytes] : image.files) {
        const QByteArray path = fixedProjectDirectory + QByteArray("/") + name.toLocal8Bit();
        struct stat64 file = {};
        if (stat64(path.constData(), &file) != 0)
            qFatal("%s: gone while it was looked at", path.constData());
        const FileId id = newId(file);
        initial.names[name] = id;
        initial.files[id] = {bytes, bytes.size()};
    }
    recording.sink = std::move(sink);
    setFileCallHook(&hook);
}

Recorder::~Recorder()
{
    setFileCallHook(nullptr);
    recording = {};
}
