// Makes file calls fail.
// SPDX-License-Identifier: MIT
#include "tests/faults/storage_faults.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <utility>

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

/// The bytes between the position and the end of the file, so that half of them is less than what is there. A
/// large number for anything but a regular file.
off64_t readable(int descriptor, off64_t position)
{
    struct stat status;
    if (position < 0 || fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode))
        return INT64_MAX;
    return std::max<off64_t>(status.st_size - position, 0);
}

/// A fault and the count of calls towards it.
struct Plan
{
    StorageFault fault;
    int seen = 0;
    bool failsNext = false; ///< the second half of ShortAndFail
    bool came = false;

    /// Whether the fault hits the call. Only transfers of two bytes or more can be cut short.
    bool hits(const FileCall& call)
    {
        if ((fault.kind && *fault.kind != call.kind) || (halves() && call.length < 2 && !failsNext))
            return false;
        ++seen;
        return failsNext || seen == fault.nth || (seen > fault.nth && fault.extent == Extent::Lasting);
    }

    /// Cuts the hit call short, or returns the errno with which it fails.
    int strike(FileCall& call)
    {
        came = true;
        if (!halves() || std::exchange(failsNext, false))
            return fault.error;
        failsNext = fault.extent == Extent::ShortAndFail;
        call.length /= 2;
        return 0;
    }

private:
    bool halves() const { return fault.extent == Extent::Short || fault.extent == Extent::ShortAndFail; }
};

class FaultyStorage : public FileCallHook
{
public:
    void begin(const std::vector<StorageFault>& faults, StorageWatch newWatch)
    {
        plans.clear();
        for (const StorageFault& fault : faults)
            plans.push_back({fault});
        watch = std::move(newWatch);
    }

    int before(FileCall& call) override
    {
        const Path path = pathOf(call);
        if (call.kind == Kind::Close)
            openPaths.erase(call.descriptor);
        if (path.text.empty())
            return 0;
        off64_t position = 0;
        if (call.kind == Kind::Read) {
            position = lseek(call.descriptor, 0, SEEK_CUR);
            call.length = std::min(call.length, readable(call.descriptor, position));
        }
        Plan* hit = nullptr;
        for (Plan& plan : plans)
            if (plan.hits(call) && !hit)
                hit = &plan;
        watch({call.kind, path.text, path.ofStream, position, hit && !hit->came ? &hit->fault : nullptr});
        return hit ? hit->strike(call) : 0;
    }

    void after(const FileCall& call, long long result) override
    {
        if ((call.kind != Kind::Open && call.kind != Kind::StreamOpen) || result < 0)
            return;
        if (const Path path = pathOf(call); !path.text.empty())
            openPaths[call.descriptor] = path;
    }

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

    std::vector<Plan> plans;
    StorageWatch watch;
    std::map<int, Path> openPaths;
};

FaultyStorage& storage()
{
    static FaultyStorage hook;
    return hook;
}

} // namespace

void planStorageFaults(const std::vector<StorageFault>& faults, StorageWatch watch)
{
    storage().begin(faults, std::move(watch));
    setFileCallHook(&storage());
}

void endStorageFaults()
{
    setFileCallHook(nullptr);
}
