// The file functions that the recorder stands in for. The executable's own definitions come before those of
// the C library for every library of the process, Qt, the C++ library and the module among them.
// SPDX-License-Identifier: MIT
#include "tests/power_cut/disk_states/recorder.h"

#include "simulated_host/private_directory.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <cstdarg>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <map>
#include <string>
#include <sys/stat.h>
#include <sys/uio.h>
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

/// The name in the project directory; null outside of it, and when nothing is recorded.
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

template <typename Open> auto recordOpen(const char* path, int flags, Open open)
{
    const char* const name = recordedName(path);
    struct stat64 file = {};
    const bool existed = name && stat64(path, &file) == 0;
    const auto result = open();
    if (!name || stat64(path, &file) != 0 || !S_ISREG(file.st_mode))
        return result;
    if (!existed)
        recording.sink({DiskOp::Kind::Make, newId(file), QString::fromLocal8Bit(name)});
    else if ((flags & O_TRUNC) && file.st_size == 0)
        recordLength(recording.ids.at(file.st_ino), 0);
    return result;
}

/// `position` is negative for a write at the file's own position.
template <typename Write>
ssize_t recordWrite(int descriptor, off64_t position, const QByteArray& bytes, Write write)
{
    struct stat64 file = {};
    const FileId* const id = recordedFile(descriptor, file);
    if (!id)
        return write();
    if (position < 0)
        position = fcntl(descriptor, F_GETFL) & O_APPEND ? file.st_size : lseek64(descriptor, 0, SEEK_CUR);
    const ssize_t written = write();
    if (written > 0)
        recordData(*id, file.st_size, position, QByteArray(bytes.constData(), static_cast<int>(written)));
    return written;
}

template <typename Resize> int recordResize(int descriptor, off64_t length, Resize resize)
{
    struct stat64 file = {};
    const FileId* const id = recordedFile(descriptor, file);
    const int result = resize();
    if (id && result == 0)
        recordLength(*id, length);
    return result;
}

template <typename Sync> int recordSync(int descriptor, Sync sync)
{
    struct stat64 file = {};
    const FileId* const id = recordedFile(descriptor, file);
    const bool isDirectory = recording.sink && S_ISDIR(file.st_mode) && file.st_ino == directoryInode();
    const int result = sync();
    if (result == 0 && id)
        recording.sink({DiskOp::Kind::SyncFile, *id});
    else if (result == 0 && isDirectory)
        recording.sink({DiskOp::Kind::SyncNames});
    return result;
}

template <typename Function> Function real(const char* name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

/// The bytes, shared with the caller for as long as the call lasts; they are copied when they are recorded.
QByteArray bytesOf(const void* data, std::size_t size)
{
    return QByteArray::fromRawData(static_cast<const char*>(data), static_cast<int>(size));
}

mode_t modeArgument(int flags, va_list arguments)
{
    return flags & (O_CREAT | O_TMPFILE) ? va_arg(arguments, mode_t) : 0;
}

int flagsOf(const char* stdioMode)
{
    return stdioMode[0] == 'w' ? O_CREAT | O_TRUNC : stdioMode[0] == 'a' ? O_CREAT : 0;
}

} // namespace

extern "C" {

#define OPEN(NAME)                                                                                           \
    int NAME(const char* path, int flags, ...)                                                               \
    {                                                                                                        \
        static const auto next = real<int (*)(const char*, int, ...)>(#NAME);                                \
        va_list arguments;                                                                                   \
        va_start(arguments, flags);                                                                          \
        const mode_t mode = modeArgument(flags, arguments);                                                  \
        va_end(arguments);                                                                                   \
        return recordOpen(path, flags, [&] { return next(path, flags, mode); });                             \
    }
OPEN(open)
OPEN(open64)

#define OPENAT(NAME)                                                                                         \
    int NAME(int directory, const char* path, int flags, ...)                                                \
    {                                                                                                        \
        static const auto next = real<int (*)(int, const char*, int, ...)>(#NAME);                           \
        va_list arguments;                                                                                   \
        va_start(arguments, flags);                                                                          \
        const mode_t mode = modeArgument(flags, arguments);                                                  \
        va_end(arguments);                                                                                   \
        return recordOpen(path, flags, [&] { return next(directory, path, flags, mode); });                  \
    }
OPENAT(openat)
OPENAT(openat64)

#define CREAT(NAME)                                                                                          \
    int NAME(const char* path, mode_t mode)                                                                  \
    {                                                                                                        \
        static const auto next = real<int (*)(const char*, mode_t)>(#NAME);                                  \
        return recordOpen(path, O_CREAT | O_TRUNC, [&] { return next(path, mode); });                        \
    }
CREAT(creat)
CREAT(creat64)

#define FOPEN(NAME)                                                                                          \
    FILE* NAME(const char* path, const char* mode)                                                           \
    {                                                                                                        \
        static const auto next = real<FILE* (*)(const char*, const char*)>(#NAME);                           \
        return recordOpen(path, flagsOf(mode), [&] { return next(path, mode); });                            \
    }
FOPEN(fopen)
FOPEN(fopen64)

ssize_t write(int descriptor, const void* data, size_t size)
{
    static const auto next = real<ssize_t (*)(int, const void*, size_t)>("write");
    return recordWrite(descriptor, -1, bytesOf(data, size), [&] { return next(descriptor, data, size); });
}

ssize_t writev(int descriptor, const iovec* parts, int count)
{
    static const auto next = real<ssize_t (*)(int, const iovec*, int)>("writev");
    QByteArray bytes;
    for (int i = 0; recording.sink && i < count; ++i)
        bytes.append(static_cast<const char*>(parts[i].iov_base), static_cast<int>(parts[i].iov_len));
    return recordWrite(descriptor, -1, bytes, [&] { return next(descriptor, parts, count); });
}

#define PWRITE(NAME, OFFSET)                                                                                 \
    ssize_t NAME(int descriptor, const void* data, size_t size, OFFSET offset)                               \
    {                                                                                                        \
        static const auto next = real<ssize_t (*)(int, const void*, size_t, OFFSET)>(#NAME);                 \
        return recordWrite(descriptor, offset, bytesOf(data, size),                                          \
                           [&] { return next(descriptor, data, size, offset); });                            \
    }
PWRITE(pwrite, off_t)
PWRITE(pwrite64, off64_t)

#define FTRUNCATE(NAME, OFFSET)                                                                              \
    int NAME(int descriptor, OFFSET length)                                                                  \
    {                                                                                                        \
        static const auto next = real<int (*)(int, OFFSET)>(#NAME);                                          \
        return recordResize(descriptor, length, [&] { return next(descriptor, length); });                   \
    }
FTRUNCATE(ftruncate, off_t)
FTRUNCATE(ftruncate64, off64_t)

#define TRUNCATE(NAME, OFFSET)                                                                               \
    int NAME(const char* path, OFFSET length)                                                                \
    {                                                                                                        \
        static const auto next = real<int (*)(const char*, OFFSET)>(#NAME);                                  \
        const int result = next(path, length);                                                               \
        struct stat64 file = {};                                                                             \
        if (result == 0 && recordedName(path) && stat64(path, &file) == 0)                                   \
            recordLength(recording.ids.at(file.st_ino), length);                                             \
        return result;                                                                                       \
    }
TRUNCATE(truncate, off_t)
TRUNCATE(truncate64, off64_t)

#define FSYNC(NAME)                                                                                          \
    int NAME(int descriptor)                                                                                 \
    {                                                                                                        \
        static const auto next = real<int (*)(int)>(#NAME);                                                  \
        return recordSync(descriptor, [&] { return next(descriptor); });                                     \
    }
FSYNC(fsync)
FSYNC(fdatasync)

int mkdir(const char* path, mode_t mode)
{
    static const auto next = real<int (*)(const char*, mode_t)>("mkdir");
    const int result = next(path, mode);
    if (result == 0 && recording.sink &&
        QDir::cleanPath(QString::fromLocal8Bit(path)) == QLatin1String(fixedProjectDirectory))
        recording.sink({DiskOp::Kind::MakeDirectory});
    return result;
}

int rename(const char* from, const char* to)
{
    static const auto next = real<int (*)(const char*, const char*)>("rename");
    const char* const name = recordedName(from);
    const char* const newName = recordedName(to);
    const int result = next(from, to);
    if (result == 0 && name && newName)
        recording.sink(
            {DiskOp::Kind::Rename, 0, QString::fromLocal8Bit(name), QString::fromLocal8Bit(newName)});
    return result;
}

int unlink(const char* path)
{
    static const auto next = real<int (*)(const char*)>("unlink");
    const int result = next(path);
    if (const char* const name = recordedName(path); result == 0 && name)
        recording.sink({DiskOp::Kind::Remove, 0, QString::fromLocal8Bit(name)});
    return result;
}

} // extern "C"

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
}

Recorder::~Recorder()
{
    recording = {};
}
