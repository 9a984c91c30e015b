// The hook that makes file calls fail.
// SPDX-License-Identifier: MIT
#include "tests/faults/storage_faults.h"

#include "simulated_host/file_calls/file_calls.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <map>
#include <optional>

#include <sys/stat.h>
#include <unistd.h>

namespace {

using Extent = StorageFault::Extent;
using Kind = FileCall::Kind;

struct Path
{
    std::string text; ///< empty for files that do not count
    bool ofStream = false;
};

/// The kind of fault that a call can have; nothing for those that never fail here.
std::optional<StorageCall> faultOf(Kind kind)
{
    switch (kind) {
    case Kind::Open:
        return StorageCall::Open;
    case Kind::StreamOpen:
        return StorageCall::StreamOpen;
    case Kind::Read:
        return StorageCall::Read;
    case Kind::Write:
        return StorageCall::Write;
    case Kind::Seek:
        return StorageCall::Seek;
    case Kind::Truncate:
        return StorageCall::Truncate;
    case Kind::Close:
        return StorageCall::Close;
    case Kind::MakeDirectory:
        return StorageCall::MakeDirectory;
    default:
        return std::nullopt;
    }
}

/// Bytes between the position and the end of the file, so that half of them is less than what is there.
/// Everything that is no regular file has plenty.
off64_t readable(int descriptor)
{
    struct stat status;
    const off_t position = lseek(descriptor, 0, SEEK_CUR);
    if (position < 0 || fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode))
        return INT64_MAX;
    return std::max<off64_t>(status.st_size - position, 0);
}

class FaultyStorage : public FileCallHook
{
public:
    void begin(const StorageFault& fault)
    {
        plan = fault;
        seen = 0;
        failsNext = false;
        happened = false;
        faultPath = {};
    }

    int before(FileCall& call) override
    {
        const std::optional<StorageCall> fault = faultOf(call.kind);
        const Path path = fault && *fault == plan.call ? pathOf(call) : Path();
        if (call.kind == Kind::Close)
            openPaths.erase(call.descriptor);
        if (call.kind == Kind::Read)
            call.length = std::min(call.length, readable(call.descriptor));
        return path.text.empty() ? 0 : judge(call, path);
    }

    void after(const FileCall& call, long long result) override
    {
        if ((call.kind != Kind::Open && call.kind != Kind::StreamOpen) || result < 0)
            return;
        if (const Path path = pathOf(call); !path.text.empty())
            openPaths[call.descriptor] = path;
    }

    bool happened = false;
    Path faultPath;

private:
    Path pathOf(const FileCall& call) const
    {
        static const char prefix[] = "/usr/tavrin";
        if (call.path)
            return std::strncmp(call.path, prefix, sizeof prefix - 1) == 0
                       ? Path{call.path, call.kind == Kind::StreamOpen}
                       : Path();
        const auto found = openPaths.find(call.descriptor);
        return found == openPaths.end() ? Path() : found->second;
    }

    /// A transfer that is to come short has its turn only if it is of two bytes or more.
    int judge(FileCall& call, const Path& path)
    {
        const bool halves = plan.extent == Extent::Short || plan.extent == Extent::ShortAndFail;
        if (halves && call.length < 2 && !failsNext)
            return 0;
        ++seen;
        const bool fails = failsNext;
        failsNext = false;
        if (!fails && (seen < plan.nth || (seen > plan.nth && plan.extent != Extent::Lasting)))
            return 0;
        if (!happened)
            faultPath = path;
        happened = true;
        if (fails || !halves)
            return plan.error;
        failsNext = plan.extent == Extent::ShortAndFail;
        call.length /= 2;
        return 0;
    }

    StorageFault plan = {};
    int seen = 0;
    bool failsNext = false; ///< the second half of ShortAndFail
    std::map<int, Path> openPaths;
};

FaultyStorage& storage()
{
    static FaultyStorage hook;
    return hook;
}

} // namespace

void planStorageFault(const StorageFault& fault)
{
    storage().begin(fault);
    setFileCallHook(&storage());
}

void endStorageFaults()
{
    setFileCallHook(nullptr);
}

bool storageFaultHappened()
{
    return storage().happened;
}

bool storageFaultOnStream()
{
    return storage().faultPath.ofStream;
}

std::string storageFaultPath()
{
    return storage().faultPath.text;
}
