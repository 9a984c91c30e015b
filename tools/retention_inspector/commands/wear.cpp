// The wear of a project as a report.
// SPDX-License-Identifier: MIT
#include "tools/retention_inspector/wear.h"

#include "tools/retention_inspector/layout_findings.h"
#include "tools/retention_inspector/layout_report.h"

#include <iterator>

namespace {

/// In years for scripts, and in a unit that suits it for people.
Value lifeValue(double years)
{
    const struct
    {
        double inYears;
        const char* unit;
    } units[] = {{1, "years"}, {1 / 365.25, "days"}, {1 / 365.25 / 24, "hours"}};
    if (years <= 0)
        return absentValue();
    for (const auto& unit : units)
        if (years >= unit.inYears || unit.unit == std::end(units)[-1].unit) {
            const double life = years / unit.inYears;
            return {
                years,
                QStringLiteral("%1 %2").arg(life, 0, 'f', life < 10 ? 1 : 0).arg(QLatin1String(unit.unit))};
        }
    return absentValue();
}

Table dayTable(const WearQuestion& question, const std::vector<DayOfWrites>& days)
{
    const bool endurance = question.enduranceCycles > 0;
    Table table{QStringLiteral("days"),
                QStringLiteral("day"),
                QStringLiteral("Each day"),
                {{"case", nullptr},
                 {nullptr, "Case"},
                 {"writes", "Writes"},
                 {"file_bytes", "File bytes"},
                 {"flash_bytes", "Flash bytes"},
                 {"erasures_in_place", "Erasures in place"},
                 {"erasures_levelled", "Erasures levelled"},
                 {"levelled_years", endurance && question.capacity > 0 ? "Lasts, levelled" : nullptr},
                 {"in_place_years", endurance ? "Lasts, in place" : nullptr}},
                {}};
    for (const DayOfWrites& day : days) {
        const double flashBytes = day.writes * day.each.flashPages * static_cast<double>(question.page);
        table.rows.push_back({textValue(day.key), textValue(day.title), numberValue(day.writes, 0),
                              numberValue(day.writes * day.each.fileBytes, 0), numberValue(flashBytes, 0),
                              numberValue(day.writes * day.each.eraseBlocks, 0),
                              numberValue(flashBytes / static_cast<double>(question.eraseBlock), 1),
                              lifeValue(levelledYears(question, day)),
                              lifeValue(inPlaceYears(question, day))});
    }
    return table;
}

Table blockTable(const Layout& layout)
{
    Table table{QStringLiteral("blocks"),
                QStringLiteral("block"),
                QStringLiteral("Bytes written into the file for one change"),
                {{"area", "Area"},
                 {"block", "Block"},
                 {nullptr, "Addresses"},
                 {"first", nullptr},
                 {"last", nullptr},
                 {"bytes", "Bytes"}},
                {}};
    for (const AreaLayout& area : layout.areas)
        for (const LayoutBlock& block : area.blocks)
            if (block.count > 0 && block.problem.isEmpty())
                table.rows.push_back({textValue(area.area->name), numberValue(qint64(block.number)),
                                      textValue(rangeText({block.first, block.last()})),
                                      numberValue(block.first), numberValue(block.last()),
                                      numberValue(area.area->bits ? qint64(1) : 2 * block.count)});
    return table;
}

/// The years that count: with wear levelling when the capacity is known.
double expectedYears(const WearQuestion& question, const DayOfWrites& day)
{
    return question.capacity > 0 ? levelledYears(question, day) : inPlaceYears(question, day);
}

Finding wornOut(const Layout& layout, const WearQuestion& question, const DayOfWrites& day)
{
    Finding finding;
    finding.kind = "worn-out-early";
    finding.place = QString::fromLatin1(day.title);
    finding.problem =
        QStringLiteral("the flash lasts %1 %2, less than the %3 years wanted.")
            .arg(lifeValue(expectedYears(question, day)).text,
                 QLatin1String(question.capacity > 0 ? "with its wear levelled" : "without wear levelling"),
                 QString::number(question.years));
    finding.remedy =
        layout.images()
            ? QStringLiteral("Raise \"Save Time\", or keep only the ranges that need it, by entries.")
            : QStringLiteral(
                  "Let fewer retained cells change, give words that change often an entry of their own, "
                  "apart from large blocks, or take a flash with wear levelling and more capacity.");
    return finding;
}

void addFacts(const Layout& layout, const WearQuestion& question, Report& report)
{
    report.facts = {modeFact(layout.settings.mode)};
    if (layout.images())
        report.facts.push_back({QStringLiteral("period_minutes"), QStringLiteral("Save period in minutes"),
                                numberValue(qint64(layout.settings.saveTimeMinutes))});
    else
        report.facts.push_back({QStringLiteral("changes_per_hour"), QStringLiteral("Changes per hour"),
                                numberValue(question.changesPerHour, 0)});
    report.facts.push_back(
        {QStringLiteral("page"), QStringLiteral("Page in bytes"), numberValue(question.page)});
    report.facts.push_back({QStringLiteral("erase_block"), QStringLiteral("Erase block in bytes"),
                            numberValue(question.eraseBlock)});
    report.facts.push_back({QStringLiteral("file_system_pages"),
                            QStringLiteral("File system's pages per write"),
                            numberValue(question.fileSystemPages)});
    if (question.capacity > 0)
        report.facts.push_back({QStringLiteral("capacity"), QStringLiteral("Capacity in bytes"),
                                numberValue(question.capacity)});
    if (question.enduranceCycles > 0)
        report.facts.push_back({QStringLiteral("endurance_cycles"),
                                QStringLiteral("Erasures per erase block"),
                                numberValue(question.enduranceCycles, 0)});
}

} // namespace

Report wearReport(const Layout& layout, const WearQuestion& question)
{
    Report report;
    report.command = QStringLiteral("wear");
    addFacts(layout, question, report);
    const std::vector<DayOfWrites> days = daysOfWrites(layout, question);
    report.tables.push_back(dayTable(question, days));
    if (!layout.images())
        report.tables.push_back(blockTable(layout));
    report.findings = settingsFindings(layout.settings);
    for (const DayOfWrites& day : days) {
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
