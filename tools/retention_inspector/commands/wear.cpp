// Counts how hard a project writes on its flash, and how long the flash lasts.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/refusal.h"
#include "tools/retention_inspector/command.h"

#include <algorithm>
#include <iterator>

namespace {

const double hoursPerDay = 24;
const double minutesPerDay = 24 * 60;
const double daysPerYear = 365.25;

/// What the user says about use and flash. Sizes in bytes.
struct Question
{
    double changesPerHour;  ///< changes of retained cells; without effect in whole-area mode
    qint64 page;            ///< smallest piece that the flash or its file system writes
    qint64 eraseBlock;      ///< smallest piece that the flash erases
    qint64 fileSystemPages; ///< pages that the file system writes for itself with each write
    qint64 capacity;        ///< of the flash, for wear levelling; 0 when unknown
    double enduranceCycles; ///< erasures that an erase block survives; 0 when unknown
    double years;           ///< wanted life
};

/// The number that the option gives: 0 without the option, otherwise one from `lowest` to `highest`. A size
/// may end in K, M or G.
double numberOf(const Inputs& inputs, const char* option, double lowest, double highest, bool size = false)
{
    if (!inputs.has(option))
        return 0;
    const QString text = inputs.option(option);
    const QString units = QStringLiteral("KMG");
    const int unit = size && !text.isEmpty() ? units.indexOf(text.back().toUpper()) : -1;
    bool ok = false;
    double number = (unit < 0 ? text : text.left(text.size() - 1)).toDouble(&ok);
    for (int i = 0; i <= unit; ++i)
        number *= 1024;
    if (!ok || !(number >= lowest && number <= highest))
        throw Refusal(QStringLiteral("--%1 \"%2\": expected a number from %3 to %4%5")
                          .arg(QLatin1String(option), text, QString::number(lowest, 'f', 0),
                               QString::number(highest, 'f', 0),
                               QLatin1String(size ? ", in bytes or with K, M or G" : "")));
    return number;
}

Question questionOf(const Inputs& inputs)
{
    const double largest = 1e15;
    const double largestPiece = 1 << 30;
    const auto size = [&](const char* option, double highest) {
        return static_cast<qint64>(numberOf(inputs, option, 1, highest, true));
    };
    return {numberOf(inputs, "changes-per-hour", 0, 1e9),
            size("page", largestPiece),
            size("erase-block", largestPiece),
            static_cast<qint64>(numberOf(inputs, "file-system-pages", 0, 1000)),
            size("capacity", largest),
            numberOf(inputs, "endurance-cycles", 1, largest),
            numberOf(inputs, "years", 0, 1000)};
}

/// What one write, or the mean of many, costs.
struct WriteCost
{
    double fileBytes = 0;   ///< written into the retention files
    double flashPages = 0;  ///< pages that this touches, those of the file system included
    double eraseBlocks = 0; ///< erase blocks that the touched pages lie in
};

WriteCost operator+(const WriteCost& a, const WriteCost& b)
{
    return {a.fileBytes + b.fileBytes, a.flashPages + b.flashPages, a.eraseBlocks + b.eraseBlocks};
}

WriteCost operator*(const WriteCost& a, double factor)
{
    return {a.fileBytes * factor, a.flashPages * factor, a.eraseBlocks * factor};
}

/// Pieces of that size that some bytes of a file touch.
double touched(qint64 piece, qint64 offset, qint64 length)
{
    if (length <= 0)
        return 0;
    const qint64 pieces = (offset + length - 1) / piece - offset / piece + 1;
    return static_cast<double>(pieces);
}

/// `length` bytes written at `offset` of a file that begins with an erase block.
WriteCost costOfWrite(const Question& question, qint64 offset, qint64 length)
{
    return {static_cast<double>(length), touched(question.page, offset, length),
            touched(question.eraseBlock, offset, length)};
}

/// What the file system writes for itself.
WriteCost fileSystemCost(const Question& question)
{
    const auto pages = static_cast<double>(question.fileSystemPages);
    return {0, pages, touched(question.eraseBlock, 0, question.fileSystemPages * question.page)};
}

/// Bytes that a change in the block writes: one for a bit, the whole block for a word.
qint64 bytesOfChange(const AreaLayout& area, const LayoutBlock& block)
{
    return area.area->bits ? 1 : qint64(2) * block.info.count;
}

/// One way in which the writes of a day may fall.
struct Day
{
    Words name;
    double writes;
    WriteCost each;
};

/// The changes of a day, spread evenly over the retained cells and all in the costliest block.
std::vector<Day> daysOfChanges(const Layout& layout, const Question& question)
{
    WriteCost sum;
    WriteCost worst;
    double cells = 0;
    for (const AreaLayout& area : layout.areas) {
        for (const LayoutBlock& block : area.blocks) {
            const auto kept = static_cast<double>(area.kept.within(block.cells()).count());
            if (kept == 0)
                continue;
            const WriteCost cost = costOfWrite(question, block.info.fileOffset, bytesOfChange(area, block)) +
                                   fileSystemCost(question);
            sum = sum + cost * kept;
            cells += kept;
            if (cost.fileBytes > worst.fileBytes)
                worst = cost;
        }
    }
    if (cells == 0)
        return {};
    const double writes = question.changesPerHour * hoursPerDay;
    return {{{"even", QStringLiteral("changes spread over all cells")}, writes, sum * (1 / cells)},
            {{"worst", QStringLiteral("all changes in the largest block")}, writes, worst}};
}

/// The days to expect; none when nothing is written.
std::vector<Day> expectedDays(const Layout& layout, const Question& question)
{
    if (!layout.images())
        return daysOfChanges(layout, question);
    if (layout.settings.saveTimeMinutes <= 0)
        return {};
    WriteCost save = fileSystemCost(question);
    for (const AreaLayout& area : layout.areas)
        save = save + costOfWrite(question, 0, area.fileLength);
    return {{{"saves", QStringLiteral("saves of whole areas")},
             minutesPerDay / layout.settings.saveTimeMinutes,
             save}};
}

double flashBytes(const Question& question, const Day& day)
{
    return day.writes * day.each.flashPages * static_cast<double>(question.page);
}

/// Years until the erase blocks are worn out when the flash spreads its erasures over all of them; 0 when the
/// question does not say enough.
double levelledYears(const Question& question, const Day& day)
{
    const double bytesPerDay = flashBytes(question, day);
    if (bytesPerDay <= 0)
        return 0;
    return question.enduranceCycles * static_cast<double>(question.capacity) / bytesPerDay / daysPerYear;
}

/// Years until the busiest erase block is worn out when nothing spreads the erasures; 0 as above.
double inPlaceYears(const Question& question, const Day& day)
{
    return day.writes > 0 ? question.enduranceCycles / day.writes / daysPerYear : 0;
}

/// The years that count: with wear levelling when the capacity is known.
double expectedYears(const Question& question, const Day& day)
{
    return question.capacity > 0 ? levelledYears(question, day) : inPlaceYears(question, day);
}

/// In years for scripts, and in a unit that suits it for people.
Value lifeValue(double years)
{
    const struct Unit
    {
        double inYears;
        const char* name;
    } units[] = {{1, "years"}, {1 / daysPerYear, "days"}, {1 / daysPerYear / hoursPerDay, "hours"}};
    if (years <= 0)
        return {};
    const Unit* const smallest = std::prev(std::end(units));
    const Unit* const unit = std::find_if(
        std::begin(units), smallest, [years](const Unit& candidate) { return years >= candidate.inYears; });
    const double life = years / unit->inYears;
    return {years,
            QStringLiteral("%1 %2").arg(life, 0, 'f', life < 10 ? 1 : 0).arg(QLatin1String(unit->name))};
}

Table dayTable(const Question& question, const std::vector<Day>& days)
{
    const bool endurance = question.enduranceCycles > 0;
    Table table{"days",
                "day",
                "Each day",
                {{"case", "Case"},
                 {"writes", "Writes"},
                 {"file_bytes", "File bytes"},
                 {"flash_bytes", "Flash bytes"},
                 {"erasures_in_place", "Erasures in place"},
                 {"erasures_levelled", "Erasures levelled"},
                 {"levelled_years", endurance && question.capacity > 0 ? "Lasts, levelled" : nullptr},
                 {"in_place_years", endurance ? "Lasts, in place" : nullptr}}};
    for (const Day& day : days)
        table.rows.push_back(
            {day.name, decimalValue(day.writes, 0), decimalValue(day.writes * day.each.fileBytes, 0),
             decimalValue(flashBytes(question, day), 0), decimalValue(day.writes * day.each.eraseBlocks, 0),
             decimalValue(flashBytes(question, day) / static_cast<double>(question.eraseBlock), 1),
             lifeValue(levelledYears(question, day)), lifeValue(inPlaceYears(question, day))});
    return table;
}

Table blockTable(const Layout& layout)
{
    Table table{"blocks",
                "block",
                "Bytes written into the file for one change",
                {{"area", "Area"},
                 {"block", "Block"},
                 {nullptr, "Addresses"},
                 {"first"},
                 {"last"},
                 {"bytes", "Bytes"}}};
    for (const AreaLayout& area : layout.areas)
        for (const LayoutBlock& block : area.blocks)
            if (block.info.count > 0 && area.problem.isEmpty())
                table.rows.push_back({area.area->name, block.number, rangeText(block.cells()), block.first(),
                                      block.last(), bytesOfChange(area, block)});
    return table;
}

Finding wornOut(const Layout& layout, const Question& question, const Day& day)
{
    return {
        Finding::Severity::Error, "worn-out-early", day.name.text,
        QStringLiteral("the flash lasts %1 %2, less than the %3 years wanted.")
            .arg(lifeValue(expectedYears(question, day)).text,
                 QLatin1String(question.capacity > 0 ? "with its wear levelled" : "without wear levelling"),
                 QString::number(question.years)),
        layout.images()
            ? QStringLiteral("Raise \"Save Time\", or keep only the ranges that need it, by entries.")
            : QStringLiteral(
                  "Let fewer retained cells change, give words that change often an entry of their own, "
                  "apart from large blocks, or take a flash with wear levelling and more capacity.")};
}

std::vector<Fact> factsOf(const Layout& layout, const Question& question)
{
    std::vector<Fact> facts = {{"mode", "Mode", layout.settings.mode}};
    if (layout.images())
        facts.push_back({"period_minutes", "Save period in minutes", int(layout.settings.saveTimeMinutes)});
    else
        facts.push_back({"changes_per_hour", "Changes per hour", decimalValue(question.changesPerHour, 0)});
    facts.push_back({"page", "Page in bytes", question.page});
    facts.push_back({"erase_block", "Erase block in bytes", question.eraseBlock});
    facts.push_back({"file_system_pages", "File system's pages per write", question.fileSystemPages});
    if (question.capacity > 0)
        facts.push_back({"capacity", "Capacity in bytes", question.capacity});
    if (question.enduranceCycles > 0)
        facts.push_back(
            {"endurance_cycles", "Erasures per erase block", decimalValue(question.enduranceCycles, 0)});
    return facts;
}

Report run(const Inputs& inputs)
{
    const Layout& layout = inputs.layout();
    const Question question = questionOf(inputs);
    if (layout.settings.mode == RetentionMode::PerAddress && !inputs.has("changes-per-hour"))
        throw Refusal(
            QStringLiteral("wear: expected --changes-per-hour N, because this project writes every change"));
    Report report;
    report.facts = factsOf(layout, question);
    const std::vector<Day> days = expectedDays(layout, question);
    report.tables.push_back(dayTable(question, days));
    if (!layout.images())
        report.tables.push_back(blockTable(layout));
    report.findings = settingsFindings(layout.settings);
    for (const Day& day : days) {
        if (question.enduranceCycles > 0 && day.writes > 0 && expectedYears(question, day) < question.years) {
            report.findings.push_back(wornOut(layout, question, day));
            break; // the cases that follow are worse
        }
    }
    if (days.empty())
        report.notes.append(QStringLiteral("Nothing is written that could be counted."));
    report.notes.append(QStringLiteral("A model, not a measurement: files begin with an erase block, every "
                                       "write reaches the flash at once, and the "
                                       "file system adds its pages to each write. \"Levelled\" spreads the "
                                       "erasures over the whole capacity; \"in "
                                       "place\" erases the busiest block with every write."));
    return report;
}

} // namespace

extern const Command wearCommand = {
    "wear",
    {{"PROJECT.xml", Argument::Kind::Project}},
    "bytes and erase blocks written a day, and how long the flash lasts",
    "Counts what the configured mode writes in a day, and with --endurance-cycles the years until the flash\n"
    "is worn out. Sizes are in bytes, or end in K, M or G.",
    "project.xml --changes-per-hour 3600\n"
    "project.xml --changes-per-hour 60 --endurance-cycles 3000 --capacity 4G --erase-block 512K",
    {{"changes-per-hour", "N", "Changes of retained cells per hour; needed for projects with entries"},
     {"endurance-cycles", "N", "Erasures that an erase block survives, from the flash's data sheet"},
     {"capacity", "SIZE", "Capacity over which the flash levels its wear; without it none is assumed"},
     {"erase-block", "SIZE", "Size of an erase block", "128K"},
     {"page", "SIZE", "Smallest piece that is written to the flash", "4K"},
     {"file-system-pages", "N", "Pages that the file system adds to every write", "1"},
     {"years", "N", "Years that the flash must last", "10"}},
    run};
