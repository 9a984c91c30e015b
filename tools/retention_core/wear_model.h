// Models how much a project writes to its flash, and how long the flash lasts.
// SPDX-License-Identifier: MIT
#pragma once

#include "tools/retention_core/layout.h"

#include <vector>

const double minutesPerHour = 60;
const double hoursPerDay = 24;
const double daysPerYear = 365.25;

/// What the model assumes about the flash and the file system on it. Sizes in bytes.
struct Flash
{
    qint64 page;               ///< smallest piece that is written
    qint64 eraseBlock;         ///< smallest piece that is erased
    qint64 fileSystemPages;    ///< pages that the file system itself fills with each write and its "sync"
    qint64 capacity;           ///< over which wear is levelled; 0 when unknown
    double enduranceCycles;    ///< erasures that an erase block survives; 0 when unknown
    qint64 fileSystemBytes;    ///< what the file system itself sends to the medium
    double erasuresOfSync = 0; ///< erasures that each "sync" causes, however little it writes

    bool levelled() const { return capacity > 0; }
};

/// A kind of flash with its usual values.
struct Medium
{
    const char* key;        ///< "sd", "emmc", "nor" or "nand"
    const char* name;       ///< for people
    const char* levelledBy; ///< what spreads its erasures over the whole capacity
    Flash flash;
};
extern const std::vector<Medium> media;

/// The cells that retention writes in one piece, and that piece.
struct WrittenPiece
{
    const AreaLayout* area = nullptr;
    const LayoutBlock* block = nullptr;
    CellRanges cells;     ///< whose changes write it; never "LB" 60100, whose changes are not written
    qint64 fileBytes = 0; ///< one byte for a bit, the whole block for a word
    qint64 filePages = 0; ///< pages of the flash that these bytes fill
    qint64 sentBytes = 0; ///< of the file that are sent to the medium
};

/// The pieces of a project with entries, in the order of the files; none for a block that keeps no cell.
std::vector<WrittenPiece> writtenPieces(const Layout& layout, const Flash& flash);

/// One pattern of writes: the cost of one of them, or the mean of many.
struct WriteCase
{
    enum class Kind
    {
        Even,  ///< changes spread over all cells
        Worst, ///< all changes where one costs most
        Save   ///< all three images
    };

    Kind kind;
    double fileBytes;                   ///< written into the retention files
    double filePages;                   ///< pages of the flash that this fills
    double systemPages;                 ///< pages that the file system adds
    double sentBytes;                   ///< to the medium, by the file system; the medium may round them up
    const LayoutBlock* block = nullptr; ///< of the Worst; null otherwise
    const AreaFacts* area = nullptr;    ///< of the Worst; null otherwise

    double flashBytes(const Flash& flash) const
    {
        return (filePages + systemPages) * static_cast<double>(flash.page);
    }
    /// The erase blocks that these bytes fill, and the additional erasures of "sync".
    double erasures(const Flash& flash) const
    {
        return flashBytes(flash) / static_cast<double>(flash.eraseBlock) + flash.erasuresOfSync;
    }
};

/// Even and Worst for a project with entries, Save for one with whole areas; none when nothing is written.
std::vector<WriteCase> writeCases(const Layout& layout, const Flash& flash);

/// Saves of whole areas, or the given changes of cells; 0 when the panel does not save.
double writesPerDay(const Layout& layout, double changesPerHour);

/// The number of writes that the flash survives if its erasures are spread over the whole capacity; 0 when
/// too little is known.
double writesLevelled(const Flash& flash, const WriteCase& each);
/// The number of writes that it survives if each erases the same block; 0 when its endurance is unknown.
double writesInPlace(const Flash& flash);
/// The number of these that applies.
double writesSurvived(const Flash& flash, const WriteCase& each);
/// How many years a number of writes lasts; 0 when there are none in a day.
double yearsOf(double writes, double perDay);
