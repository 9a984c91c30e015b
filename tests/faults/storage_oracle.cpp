// States literally what each mode keeps in its files under a fault.
// SPDX-License-Identifier: MIT
#include "tests/faults/storage_oracle.h"

#include <algorithm>
#include <cerrno>
#include <climits>

namespace {

using Extent = StorageFault::Extent;
using Kind = FileCall::Kind;

const TestArea& areaOf(const AreaStart& start)
{
    return testAreas[start.area];
}

/// Whether the fault has no effect: short transfers are continued, failures to close do not matter, creating
/// a file seeks without need, and interrupted reads, writes and opens of descriptors are repeated.
bool heals(const Hit& hit)
{
    const StorageFault& fault = hit.fault;
    if (fault.kind == Kind::Seek && fault.extent == Extent::Once && !hit.onStream)
        return true;
    if (fault.extent == Extent::Short || fault.kind == Kind::Close)
        return true;
    return fault.error == EINTR &&
           (fault.kind == Kind::Open || fault.kind == Kind::Read || fault.kind == Kind::Write);
}

/// A life of one area: the hits, and the area's state.
struct Course
{
    Hits hits;
    AreaStart start;
    QByteArray memory = imageAtStart(areaOf(start));
    std::optional<QByteArray> file = start.file;
    std::vector<FileState> files = {{Create, file}};
    bool open = false;
    bool broken = false; ///< the stream has failed for good

    /// The hit that makes one of these calls fail for this area in that step; null when there is none.
    const Hit* hitBy(std::initializer_list<Kind> kinds, int step) const
    {
        for (const Hit& hit : hits) {
            const bool here = step == hit.step && (!hit.area || hit.area == start.area);
            const bool later = hit.fault.extent == Extent::Lasting &&
                               (step > hit.step || (step == hit.step && start.area > hit.area));
            if (!heals(hit) && (here || later) &&
                std::find(kinds.begin(), kinds.end(), hit.fault.kind) != kinds.end())
                return &hit;
        }
        return nullptr;
    }

    void become(int step, const QByteArray& bytes)
    {
        file = bytes;
        files.push_back({step, file});
    }

    void store(int step, int offset, const QByteArray& bytes)
    {
        QByteArray stored = *file + QByteArray(qMax(0, offset + bytes.size() - file->size()), '\0');
        become(step, stored.replace(offset, bytes.size(), bytes));
    }
};

/// Creates the file at that length, as far as the faults allow.
void make(Course& course, int step, int length)
{
    if (!course.start.hasDirectory && course.hitBy({Kind::MakeDirectory}, Create))
        return;
    const QByteArray before = course.file.value_or(QByteArray());
    const bool resizes = !course.hitBy({Kind::Truncate}, step);
    if (!course.hitBy({Kind::Open}, step))
        course.become(step, QByteArray(""));
    else if (course.file &&
             resizes) // a file that could not be emptied still gets its length, through its path
        course.become(step, before + QByteArray(length - before.size(), '\0'));
    if (course.file == QByteArray("") && resizes)
        course.become(step, QByteArray(length, '\0'));
}

void openStream(Course& course, int step)
{
    course.open = course.file && !course.hitBy({Kind::StreamOpen}, step);
}

/// Writes to an open stream, unless it is broken or breaks now.
void writeThrough(Course& course, int step, int offset, const QByteArray& bytes)
{
    if (!course.open || course.broken)
        return;
    const Hit* const hit = course.hitBy({Kind::Seek, Kind::Write}, step);
    if (!hit)
        course.store(step, offset, bytes);
    else if (hit->fault.kind == Kind::Write && hit->fault.extent == Extent::ShortAndFail)
        course.store(step, offset, bytes.left(bytes.size() / 2));
    course.broken = hit != nullptr;
}

/// How many of the `there` bytes from `place` on are read before the hit.
int readBefore(const Hit& hit, int place, int there)
{
    if (hit.fault.kind != Kind::Read)
        return 0;
    const int before = hit.position - place;
    return hit.fault.extent == Extent::ShortAndFail ? before + (there - before) / 2 : before;
}

void startWholeArea(Course& course)
{
    const TestArea& area = areaOf(course.start);
    if (!course.hitBy({Kind::Look}, Open) && (!course.file || course.file->size() < area.imageBytes))
        make(course, Open, area.imageBytes);
    openStream(course, Open);
    if (course.open) {
        QByteArray readable = *course.file;
        if (const Hit* const hit = course.hitBy({Kind::Seek, Kind::Read}, Open))
            readable.truncate(hit->area == course.start.area ? readBefore(*hit, 0, readable.size()) : 0);
        course.broken = readable.size() < area.imageBytes;
        course.memory.replace(0, std::min(static_cast<int>(readable.size()), area.imageBytes),
                              readable.left(area.imageBytes));
    }
}

int bitInFile(const QByteArray& file, int bit)
{
    return bit / 8 < file.size() ? file.at(bit / 8) >> (bit % 8) & 1 : 0;
}

/// The number of writes to the area that a restore completes.
int writesUntil(const Hit* hit, std::size_t area)
{
    return !hit ? INT_MAX : hit->area == area ? hit->areaWrites : 0;
}

/// Words that cannot be read are restored as 0.
void restoreWordBlocks(Course& course, const Hit* hit)
{
    int left = writesUntil(hit, course.start.area);
    for (const LifeBlock& block : lifeBlocks) {
        if (block.area != course.start.area)
            continue;
        int readable = course.open ? qBound(0, course.file->size() - block.place, 2 * block.count) : 0;
        if (left <= 0) // the block in which the fault occurred, or a later one
            readable = left == 0 && hit->area == block.area ? readBefore(*hit, block.place, readable) : 0;
        const QByteArray words = course.file.value_or(QByteArray()).mid(block.place, readable);
        course.memory.replace(2 * block.first, 2 * block.count, words.leftJustified(2 * block.count, '\0'));
        --left;
    }
}

/// Bits of a byte that is 0 or missing are not written to the area.
void restoreBits(Course& course, const Hit* hit)
{
    int left = course.open ? writesUntil(hit, course.start.area) : 0;
    for (const LifeBlock& block : lifeBlocks)
        for (int j = 0; block.area == course.start.area && j < block.count; ++j) {
            const int bit = block.place + j;
            if (left > 0 && bit / 8 < course.file->size() && course.file->at(bit / 8) != 0) {
                course.memory[block.first + j] = static_cast<char>(bitInFile(*course.file, bit));
                --left;
            }
        }
}

void writeBit(Course& course, int step, const LifeBlock& block, const Change& change)
{
    const int bit = block.place + change.address - block.first;
    const int byte = bit / 8 < course.file->size() ? course.file->at(bit / 8) : 0;
    const int mask = 1 << (bit % 8);
    course.broken = course.broken || course.hitBy({Kind::Read}, step); // the byte is read first
    writeThrough(course, step, bit / 8,
                 QByteArray(1, static_cast<char>(change.value ? byte | mask : byte & ~mask)));
}

/// The panel changes the cell; unless the change is left out, the cell's block is written.
void runChange(Course& course, int step, const Change& change, bool leftOut)
{
    const bool bits = areaOf(course.start).bits;
    if (bits)
        course.memory[change.address] = static_cast<char>(change.value != 0);
    else
        course.memory.replace(2 * change.address, 2, reinterpret_cast<const char*>(&change.value), 2);
    for (const LifeBlock& block : lifeBlocks) {
        if (leftOut || block.area != change.area || change.address < block.first ||
            change.address >= block.first + block.count)
            continue;
        if (!course.open)
            openStream(course, step);
        if (course.open && bits)
            writeBit(course, step, block, change);
        else if (course.open)
            writeThrough(course, step, block.place, course.memory.mid(2 * block.first, 2 * block.count));
    }
}

void runEvents(Course& course, const std::set<int>& leftOut)
{
    const bool wholeAreas = course.start.mode == Mode::WholeAreas;
    for (int event = 0; event < eventsOf(course.start.mode); ++event) {
        const int step = FirstEvent + event;
        const Change& change = lifeChanges[static_cast<std::size_t>(event)];
        if (!wholeAreas && change.area == course.start.area)
            runChange(course, step, change, leftOut.count(step) != 0);
        else if (wholeAreas && leftOut.count(step) == 0)
            writeThrough(course, step, 0, imageForCycle(areaOf(course.start), event + 1));
    }
}

int newFileLength(const AreaStart& start)
{
    int cells = 0;
    for (const LifeBlock& block : lifeBlocks)
        cells += block.area == start.area ? block.count : 0;
    return areaOf(start).bits ? cells / 8 + 1 : 2 * cells;
}

void startPerAddress(Course& course)
{
    const bool unknown = course.hitBy({Kind::Look}, Init); // it is then treated as a file with values
    if (!course.file && !unknown) {
        make(course, Init, newFileLength(course.start));
    } else if (unknown || !course.file->isEmpty()) {
        openStream(course, Init);
        if (unknown && !course.open)
            return; // but if it cannot be opened either, there is nothing to say that it has any
        const Hit* const hit = course.open ? course.hitBy({Kind::Seek, Kind::Read}, Init) : nullptr;
        if (areaOf(course.start).bits)
            restoreBits(course, hit);
        else
            restoreWordBlocks(course, hit);
        course.broken = hit != nullptr;
    }
}

} // namespace

AreaOutcome outcome(const AreaStart& start, const Hits& hits)
{
    Course course = {hits, start};
    if (start.mode == Mode::WholeAreas)
        startWholeArea(course);
    else
        startPerAddress(course);
    const QByteArray restored = course.memory;
    runEvents(course, {});
    return {restored, course.files};
}

std::optional<QByteArray> fileAtEnd(const AreaStart& start, const QByteArray& restored,
                                    const std::set<int>& leftOut)
{
    Course course = {{}, start, restored};
    openStream(course, FirstEvent);
    runEvents(course, leftOut);
    return course.file;
}
