// Enumerates subsets and orders of the pending operations.
// SPDX-License-Identifier: MIT
#include "tests/power_cut/disk_states/cut_states.h"

#include <algorithm>
#include <numeric>
#include <set>

namespace {

using Ops = std::vector<DiskOp>;

/// The contents that one file may have after the cut, and whether they end in old bytes of the medium.
struct Outcomes
{
    std::vector<std::pair<QByteArray, bool>> contents;
    bool complete = true;
};

bool isData(const DiskOp& op)
{
    return op.kind == DiskOp::Kind::Data;
}

qint64 sectorOf(const DiskOp& data)
{
    return data.offset / 512;
}

bool changesNothing(const DiskFile& file, const DiskOp& op)
{
    return isData(op) && file.data.mid(static_cast<int>(op.offset), op.bytes.size()) == op.bytes;
}

/// Drops data without effect in any order. Writing the same bytes has an effect when another write of the
/// sector or a change of the length may come before it.
Ops effectiveOps(const DiskFile& file, const Ops& ops)
{
    if (!std::all_of(ops.begin(), ops.end(), isData))
        return ops;
    std::set<qint64> changed;
    for (const DiskOp& op : ops)
        if (!changesNothing(file, op))
            changed.insert(sectorOf(op));
    Ops effective;
    std::copy_if(ops.begin(), ops.end(), std::back_inserter(effective),
                 [&](const DiskOp& op) { return changed.count(sectorOf(op)) != 0; });
    return effective;
}

bool areIndependent(const Ops& ops)
{
    std::set<qint64> sectors;
    return std::all_of(ops.begin(), ops.end(),
                       [&](const DiskOp& op) { return isData(op) && sectors.insert(sectorOf(op)).second; });
}

void addSubsets(const DiskFile& file, const Ops& ops, std::set<QByteArray>& contents)
{
    for (unsigned subset = 0; subset < 1U << ops.size(); ++subset) {
        DiskFile result = file;
        for (std::size_t i = 0; i < ops.size(); ++i)
            if (subset & 1U << i)
                result.apply(ops[i]);
        contents.insert(result.visible());
    }
}

void addOrderedSubsets(const DiskFile& file, const Ops& left, std::set<QByteArray>& contents)
{
    contents.insert(file.visible());
    for (std::size_t i = 0; i < left.size(); ++i) {
        DiskFile next = file;
        next.apply(left[i]);
        Ops rest = left;
        rest.erase(rest.begin() + static_cast<std::ptrdiff_t>(i));
        addOrderedSubsets(next, rest, contents);
    }
}

/// Marks what arrives: a random part, a beginning, an end, all but one, or one alone.
std::vector<bool> randomArrivals(std::size_t count, RandomSource& random)
{
    const int size = static_cast<int>(count);
    const int style = random.below(7);
    const int place = random.below(size);
    std::vector<bool> arrives(count);
    for (int i = 0; i < size; ++i) {
        const bool choices[] = {random.oneIn(2), random.oneIn(20), !random.oneIn(20), i < place,
                                i >= place,      i != place,       i == place};
        arrives[static_cast<std::size_t>(i)] = choices[style];
    }
    return arrives;
}

QByteArray randomContent(const DiskFile& file, const Ops& ops, RandomSource& random)
{
    std::vector<std::size_t> order(ops.size());
    std::iota(order.begin(), order.end(), 0);
    if (random.oneIn(2))
        std::shuffle(order.begin(), order.end(), random.engine);
    const std::vector<bool> arrives = randomArrivals(ops.size(), random);
    DiskFile result = file;
    for (const std::size_t i : order)
        if (arrives[i])
            result.apply(ops[i]);
    return result.visible();
}

/// Returns whether all contents were added.
bool addContents(const DiskFile& file, const Ops& ops, RandomSource& random, int samples,
                 std::set<QByteArray>& contents)
{
    if (ops.size() <= 8 && areIndependent(ops)) {
        addSubsets(file, ops, contents);
        return true;
    }
    if (ops.size() <= 5) {
        addOrderedSubsets(file, ops, contents);
        return true;
    }
    DiskFile all = file;
    for (const DiskOp& op : ops)
        all.apply(op);
    contents.insert({file.visible(), all.visible()});
    for (int i = 0; i < samples; ++i)
        contents.insert(randomContent(file, ops, random));
    return false;
}

Outcomes outcomesOf(const DiskFile& file, const Ops& allOps, RandomSource& random, int samples)
{
    Ops ops = effectiveOps(file, allOps);
    std::set<QByteArray> clean;
    Outcomes outcomes;
    outcomes.complete = addContents(file, ops, random, samples, clean);
    for (const QByteArray& content : clean)
        outcomes.contents.emplace_back(content, false);

    bool grows = false;
    for (DiskOp& op : ops)
        if (op.kind == DiskOp::Kind::GrowTo) {
            op = withStaleBytes(op);
            grows = true;
        }
    std::set<QByteArray> stale;
    if (grows)
        addContents(file, ops, random, samples, stale);
    for (const QByteArray& content : stale)
        if (clean.count(content) == 0)
            outcomes.contents.emplace_back(content, true);
    return outcomes;
}

/// The names that exist, and every combination of their contents.
bool visitContents(const Disk& names, const std::map<FileId, Outcomes>& outcomes, RandomSource& random,
                   int samples, const std::function<void(const DiskImage&)>& visit)
{
    DiskImage image;
    image.directory = names.directory;
    if (!image.directory) {
        visit(image);
        return true;
    }
    bool complete = true;
    std::size_t product = 1;
    for (const auto& [name, file] : names.names) {
        product = std::min<std::size_t>(product * outcomes.at(file).contents.size(), 1U << 30);
        complete = complete && outcomes.at(file).complete;
    }
    const bool all = product <= 256;
    const std::size_t rounds = all ? product : static_cast<std::size_t>(samples);
    for (std::size_t round = 0; round < rounds; ++round) {
        std::size_t digits = all ? round : random.engine();
        for (const auto& [name, file] : names.names) {
            const auto& contents = outcomes.at(file).contents;
            const auto& [bytes, stale] = contents[digits % contents.size()];
            image.files[name] = bytes;
            image.stale.erase(name);
            if (stale)
                image.stale.insert(name);
            digits = all ? digits / contents.size() : random.engine();
        }
        visit(image);
    }
    return complete && all;
}

} // namespace

bool forEachCutState(const Disk& synced, const std::vector<DiskOp>& unsynced, RandomSource& random,
                     int samples, const std::function<void(const DiskImage&)>& visit)
{
    Ops nameOps;
    std::map<FileId, Ops> fileOps;
    for (const auto& [file, content] : synced.files)
        fileOps[file] = {};
    Disk now = synced;
    for (const DiskOp& op : unsynced) {
        if (op.isInFile()) {
            const Ops atoms = atomsOf(op, now.files[op.file].length);
            fileOps[op.file].insert(fileOps[op.file].end(), atoms.begin(), atoms.end());
        } else {
            nameOps.push_back(op);
        }
        if (op.kind == DiskOp::Kind::Make)
            fileOps[op.file];
        now.apply(op);
    }
    std::map<FileId, Outcomes> outcomes;
    for (const auto& [file, ops] : fileOps) {
        const auto found = synced.files.find(file);
        outcomes[file] =
            outcomesOf(found == synced.files.end() ? DiskFile() : found->second, ops, random, samples);
    }

    // A module makes three files: there are few subsets of names.
    const bool allNames = nameOps.size() <= 10;
    const std::size_t rounds =
        allNames ? std::size_t(1) << nameOps.size() : static_cast<std::size_t>(samples);
    bool complete = allNames;
    for (std::size_t round = 0; round < rounds; ++round) {
        const std::size_t subset = allNames ? round : random.engine();
        Disk disk = synced;
        for (std::size_t i = 0; i < nameOps.size(); ++i)
            if (subset >> (i % 64) & 1)
                disk.apply(nameOps[i]);
        complete &= visitContents(disk, outcomes, random, samples, visit);
    }
    return complete;
}

std::optional<DiskImage> withSpoiledPages(const Disk& synced, const std::vector<DiskOp>& unsynced,
                                          RandomSource& random)
{
    const qint64 pageBytes = 4096;
    Disk disk = synced;
    std::map<FileId, std::set<qint64>> pages;
    for (const DiskOp& op : unsynced) {
        disk.apply(op);
        if (isData(op))
            for (qint64 page = op.offset / pageBytes; page * pageBytes < op.offset + op.bytes.size(); ++page)
                pages[op.file].insert(page);
    }
    if (pages.empty())
        return std::nullopt;
    for (const auto& [file, spoiled] : pages) {
        QByteArray& data = disk.files[file].data;
        for (const qint64 page : spoiled)
            for (qint64 at = page * pageBytes; at < std::min<qint64>((page + 1) * pageBytes, data.size());
                 ++at)
                data[static_cast<int>(at)] = static_cast<char>(random.below(256));
    }
    return disk.image();
}
