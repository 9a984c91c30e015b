// A literal account of what each mode keeps of its files under a fault.
// SPDX-License-Identifier: MIT
#include "tests/faults/storage_oracle.h"

#include <algorithm>
#include <cerrno>

namespace {

using Extent = StorageFault::Extent;

const LifeArea& areaOf(const AreaStart& start)
{
    return lifeAreas[static_cast<std::size_t>(start.area)];
}

/// Whether nobody notices the fault: short transfers are continued, failures to close have no effect, the
/// making of a file asks for its position without need, and interrupted reads, writes and openings of
/// descriptors are repeated.
bool heals(const Hit& hit)
{
    const StorageFault& fault = hit.fault;
    if (fault.call == StorageCall::Seek && fault.extent == Extent::Once && !hit.onStream)
        return true;
    if (fault.extent == Extent::Short || fault.call == StorageCall::Close)
        return true;
    return fault.error == EINTR && (fault.call == StorageCall::Open || fault.call == StorageCall::Read ||
                                    fault.call == StorageCall::Write);
}

/// A life of one area: the hit, and the state that it moves through.
struct Course
{
    std::optional<Hit> hit;
    int area = 0;
    std::optional<QByteArray> file;
    QByteArray memory;
    bool open = false;
    bool broken = false; ///< the stream has failed for good

    /// Whether one of these calls fails for this area in that step.
    bool hitBy(std::initializer_list<StorageCall> calls, int step) const
    {
        if (!hit || heals(*hit))
            return false;
        const bool first = step == hit->step && (hit->area < 0 || hit->area == area);
        const bool later = hit->fault.extent == Extent::Lasting &&
                           (step > hit->step || (step == hit->step && area > hit->area));
        return (first || later) && std::find(calls.begin(), calls.end(), hit->fault.call) != calls.end();
    }

    bool halfDone() const { return hit->fault.extent == Extent::ShortAndFail; }

    void store(int offset, const QByteArray& bytes)
    {
        if (file->size() < offset + bytes.size())
            file->append(QByteArray(offset + bytes.size() - file->size(), '\0'));
        file->replace(offset, bytes.size(), bytes);
    }
};

/// Makes the file at that length, as far as the fault lets it.
void make(Course& course, int step, int length)
{
    const QByteArray before = course.file.value_or(QByteArray());
    if (course.hitBy({StorageCall::MakeDirectory}, Create))
        return;
    if (course.hitBy({StorageCall::Open}, step)) {
        // What could not be emptied still gets its length, by its path.
        if (course.file)
            course.file = before + QByteArray(length - before.size(), '\0');
        return;
    }
    course.file = course.hitBy({StorageCall::Truncate}, step) ? QByteArray("") : QByteArray(length, '\0');
}

void openStream(Course& course, int step)
{
    course.open = course.file && !course.hitBy({StorageCall::StreamOpen}, step);
}

/// Writes to an open stream, unless it is or gets broken.
void writeThrough(Course& course, int step, int offset, const QByteArray& bytes)
{
    if (course.open && !course.broken && course.hitBy({StorageCall::Seek, StorageCall::Write}, step)) {
        if (course.halfDone() && course.hit->fault.call == StorageCall::Write)
            course.store(offset, bytes.left(bytes.size() / 2));
        course.broken = true;
    }
    if (course.open && !course.broken)
        course.store(offset, bytes);
}

AreaOutcome wholeAreaOutcome(const AreaStart& start, Course course)
{
    const LifeArea& area = areaOf(start);
    if (!course.file || course.file->size() < area.imageBytes)
        make(course, Open, area.imageBytes);
    openStream(course, Open);
    if (course.open) {
        QByteArray readable = *course.file;
        if (course.hitBy({StorageCall::Seek, StorageCall::Read}, Open))
            readable = course.halfDone() ? readable.left(area.imageBytes / 2) : QByteArray();
        course.broken = readable.size() < area.imageBytes;
        course.memory.replace(0, std::min(static_cast<int>(readable.size()), area.imageBytes),
                              readable.left(area.imageBytes));
    }
    AreaOutcome result = {course.memory, std::nullopt};
    for (int cycle = 1; cycle <= lifeCycles; ++cycle)
        writeThrough(course, FirstEvent + cycle - 1, 0, imageForCycle(area, cycle));
    result.file = course.file;
    return result;
}

int bitInFile(const QByteArray& file, int bit)
{
    return bit / 8 < file.size() ? file.at(bit / 8) >> (bit % 8) & 1 : 0;
}

/// Restores one word block; what is beyond the first `readable` bytes comes out as zero.
void restoreWords(Course& course, const LifeBlock& block, int readable)
{
    QByteArray words = course.open ? course.file->mid(block.place, readable) : QByteArray();
    words.append(QByteArray(2 * block.count - words.size(), '\0'));
    course.memory.replace(2 * block.first, words.size(), words);
}

/// Restores one bit; bits of a zero byte, and what cannot be read, stay as they are.
void restoreBit(Course& course, int address, int bit, bool readable)
{
    if (!readable || bit / 8 >= course.file->size() || course.file->at(bit / 8) == 0)
        return;
    course.memory[address] = static_cast<char>(bitInFile(*course.file, bit));
}

void restore(Course& course, int area, int unitsRestored)
{
    int unit = 0;
    for (const LifeBlock& block : lifeBlocks) {
        if (block.area != area)
            continue;
        if (lifeAreas[static_cast<std::size_t>(area)].bits) {
            for (int j = 0; j < block.count; ++j)
                restoreBit(course, block.first + j, block.place + j, course.open && unit++ < unitsRestored);
            continue;
        }
        const bool breaksHere = unit == unitsRestored && course.hit && course.halfDone();
        const int there = qBound(0, course.file->size() - block.place, 2 * block.count);
        restoreWords(course, block, unit < unitsRestored ? there : breaksHere ? there / 2 : 0);
        ++unit;
    }
}

void writeBit(Course& course, int step, const LifeBlock& block, const Change& change)
{
    const int bit = block.place + change.address - block.first;
    const int byte = bit / 8 < course.file->size() ? course.file->at(bit / 8) : 0;
    const int mask = 1 << (bit % 8);
    course.broken = course.broken || course.hitBy({StorageCall::Read}, step); // the byte is read first
    writeThrough(course, step, bit / 8,
                 QByteArray(1, static_cast<char>(change.value ? byte | mask : byte & ~mask)));
}

void runChange(Course& course, const LifeArea& area, int step, const Change& change)
{
    for (const LifeBlock& block : lifeBlocks) {
        if (block.area != change.area || change.address < block.first ||
            change.address >= block.first + block.count)
            continue;
        if (area.bits)
            course.memory[change.address] = static_cast<char>(change.value != 0);
        else
            course.memory.replace(2 * change.address, 2, reinterpret_cast<const char*>(&change.value), 2);
        if (!course.open)
            openStream(course, step);
        if (!course.open)
            continue;
        if (area.bits)
            writeBit(course, step, block, change);
        else
            writeThrough(course, step, block.place, course.memory.mid(2 * block.first, 2 * block.count));
    }
}

int newFileLength(const AreaStart& start)
{
    int cells = 0;
    for (const LifeBlock& block : lifeBlocks)
        cells += block.area == start.area ? block.count : 0;
    return areaOf(start).bits ? cells / 8 + 1 : 2 * cells;
}

AreaOutcome perAddressOutcome(const AreaStart& start, Course course, int unitsRestored)
{
    if (!course.file) {
        make(course, Init, newFileLength(start));
    } else if (!course.file->isEmpty()) {
        openStream(course, Init);
        course.broken = course.hitBy({StorageCall::Seek, StorageCall::Read}, Init);
        const bool hitHere = course.hit && course.hit->area == start.area;
        restore(course, start.area, !course.broken ? restoreUnits(start) : hitHere ? unitsRestored : 0);
    }
    AreaOutcome result = {course.memory, std::nullopt};
    for (std::size_t k = 0; k < lifeChanges.size(); ++k) {
        if (lifeChanges[k].area == start.area)
            runChange(course, areaOf(start), FirstEvent + static_cast<int>(k), lifeChanges[k]);
    }
    result.file = course.file;
    return result;
}

} // namespace

int restoreUnits(const AreaStart& start)
{
    int units = 0;
    if (start.mode == Mode::WholeAreas)
        return 1;
    for (const LifeBlock& block : lifeBlocks)
        if (block.area == start.area)
            units += areaOf(start).bits ? block.count : 1;
    return units;
}

AreaOutcome outcome(const AreaStart& start, const std::optional<Hit>& hit, int unitsRestored)
{
    Course course;
    course.hit = hit;
    course.area = start.area;
    course.file = start.file;
    course.memory = imageAtStart(areaOf(start));
    return start.mode == Mode::WholeAreas ? wholeAreaOutcome(start, course)
                                          : perAddressOutcome(start, course, unitsRestored);
}
