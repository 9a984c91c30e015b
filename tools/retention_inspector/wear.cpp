// The wear model: what a write touches, how many writes a day has, how long the flash lasts.
// SPDX-License-Identifier: MIT
#include "tools/retention_inspector/wear.h"

#include <algorithm>

namespace {

const double hoursPerDay = 24;
const double minutesPerDay = 24 * 60;
const double daysPerYear = 365.25;

/// Pieces of that size that some bytes of a file touch.
double touched(qint64 piece, qint64 offset, qint64 length)
{
    if (length <= 0)
        return 0;
    const qint64 pieces = (offset + length - 1) / piece - offset / piece + 1;
    return static_cast<double>(pieces);
}

WriteCost operator+(const WriteCost& a, const WriteCost& b)
{
    return {a.fileBytes + b.fileBytes, a.flashPages + b.flashPages, a.eraseBlocks + b.eraseBlocks};
}

WriteCost operator*(const WriteCost& a, double factor)
{
    return {a.fileBytes * factor, a.flashPages * factor, a.eraseBlocks * factor};
}

/// What the file system writes for itself.
WriteCost fileSystemCost(const WearQuestion& question)
{
    const auto pages = static_cast<double>(question.fileSystemPages);
    return {0, pages, touched(question.eraseBlock, 0, question.fileSystemPages * question.page)};
}

struct ChangeCost
{
    double cells; ///< cells of the area in the block
    WriteCost each;
};

/// The cost of a change in each block that keeps cells: one byte for a bit, the whole block for a word.
std::vector<ChangeCost> changeCosts(const Layout& layout, const WearQuestion& question)
{
    std::vector<ChangeCost> costs;
    for (const AreaLayout& area : layout.areas) {
        for (const LayoutBlock& block : area.blocks) {
            const qint64 cells =
                block.problem.isEmpty() ? area.kept.within({block.first, block.last()}).count() : 0;
            if (cells == 0)
                continue;
            const qint64 length = area.area->bits ? 1 : 2 * block.count;
            costs.push_back({static_cast<double>(cells),
                             costOfWrite(question, block.byte, length) + fileSystemCost(question)});
        }
    }
    return costs;
}

} // namespace

WriteCost costOfWrite(const WearQuestion& question, qint64 offset, qint64 length)
{
    return {static_cast<double>(length), touched(question.page, offset, length),
            touched(question.eraseBlock, offset, length)};
}

std::vector<DayOfWrites> daysOfWrites(const Layout& layout, const WearQuestion& question)
{
    if (layout.images()) {
        if (layout.settings.saveTimeMinutes <= 0)
            return {};
        WriteCost save = fileSystemCost(question);
        for (const AreaLayout& area : layout.areas)
            save = save + costOfWrite(question, 0, area.fileLength);
        return {{"saves", "saves of whole areas", minutesPerDay / layout.settings.saveTimeMinutes, save}};
    }
    const std::vector<ChangeCost> costs = changeCosts(layout, question);
    if (costs.empty())
        return {};
    WriteCost sum;
    double cells = 0;
    for (const ChangeCost& cost : costs) {
        sum = sum + cost.each * cost.cells;
        cells += cost.cells;
    }
    const ChangeCost& worst =
        *std::max_element(costs.begin(), costs.end(), [](const ChangeCost& a, const ChangeCost& b) {
            return a.each.fileBytes < b.each.fileBytes;
        });
    const double writes = question.changesPerHour * hoursPerDay;
    return {{"even", "changes spread over all cells", writes, sum * (1 / cells)},
            {"worst", "all changes in the largest block", writes, worst.each}};
}

double levelledYears(const WearQuestion& question, const DayOfWrites& day)
{
    const double bytesPerDay = day.writes * day.each.flashPages * static_cast<double>(question.page);
    if (bytesPerDay <= 0 || question.capacity <= 0)
        return 0;
    return question.enduranceCycles * static_cast<double>(question.capacity) / bytesPerDay / daysPerYear;
}

double inPlaceYears(const WearQuestion& question, const DayOfWrites& day)
{
    return day.writes > 0 ? question.enduranceCycles / day.writes / daysPerYear : 0;
}
