// The command "wear": how hard a project writes on its flash.
// SPDX-License-Identifier: MIT
#ifndef TOOLS_RETENTION_INSPECTOR_WEAR_H
#define TOOLS_RETENTION_INSPECTOR_WEAR_H

#include "tools/retention_core/layout.h"
#include "tools/retention_inspector/report/report.h"

/// What the user says about use and flash. Sizes in bytes.
struct WearQuestion
{
    double changesPerHour = 0;  ///< changes of retained cells; without effect in whole-area mode
    qint64 page = 4096;         ///< smallest piece that the flash or its file system writes
    qint64 eraseBlock = 131072; ///< smallest piece that the flash erases
    qint64 fileSystemPages = 1; ///< pages that the file system writes for itself with each write
    qint64 capacity = 0;        ///< of the flash, for wear levelling; 0 when unknown
    double enduranceCycles = 0; ///< erasures that an erase block survives; 0 when unknown
    double years = 10;          ///< wanted life
};

/// What one write, or the mean of many, costs.
struct WriteCost
{
    double fileBytes = 0;   ///< written into the retention files
    double flashPages = 0;  ///< pages that this touches, those of the file system included
    double eraseBlocks = 0; ///< erase blocks that the touched pages lie in
};

/// One way in which the writes of a day may fall.
struct DayOfWrites
{
    const char* key; ///< "even", "worst" or "saves"
    const char* title;
    double writes; ///< a day
    WriteCost each;
};

/// The cost of `length` bytes written at `offset` of a file that begins with an erase block.
WriteCost costOfWrite(const WearQuestion& question, qint64 offset, qint64 length);

/// The days to expect: in per-address mode with the changes spread evenly over the retained cells and with
/// all of them in the costliest block; in whole-area mode with the saves. None when nothing is written.
std::vector<DayOfWrites> daysOfWrites(const Layout& layout, const WearQuestion& question);

/// Years until the erase blocks are worn out when the flash spreads its erasures over all of them; 0 when the
/// question does not say enough.
double levelledYears(const WearQuestion& question, const DayOfWrites& day);
/// Years until the busiest erase block is worn out when nothing spreads the erasures; 0 as above.
double inPlaceYears(const WearQuestion& question, const DayOfWrites& day);

Report wearReport(const Layout& layout, const WearQuestion& question);

#endif
