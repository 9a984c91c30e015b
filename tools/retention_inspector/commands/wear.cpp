// Tells how much a project writes to its flash, how long the flash lasts, and how many changes it allows.
// SPDX-License-Identifier: MIT
#include "tools/numbers.h"
#include "tools/retention_core/device_writes.h"
#include "tools/retention_core/refusal.h"
#include "tools/retention_core/wear_model.h"
#include "tools/retention_inspector/command.h"
#include "tools/retention_inspector/report/progress.h"

#include <QtCore/QLocale>
#include <QtCore/QRegularExpression>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <iterator>
#include <thread>

namespace {

const double secondsPerMinute = 60;

/// What the user wants to know.
struct Question
{
    Flash flash;
    const Medium* medium;  ///< null when none is named
    double changesPerHour; ///< of retained cells; 0 when not given
    double years;          ///< wanted life
};

[[noreturn]] void refuseOption(const char* option, const QString& text, const QString& expected)
{
    throw Refusal(QStringLiteral("--%1 \"%2\": expected %3").arg(QLatin1String(option), text, expected));
}

/// Parses a number that a unit may follow, such as "0x10", "0.5", "4 GiB" or "10/min"; `unit` gets the text
/// after the number. Nothing for any other text.
std::optional<double> numberWithUnit(const QString& text, QString& unit)
{
    static const QRegularExpression form(
        QStringLiteral("^\\s*(0[xX][0-9a-fA-F]+|[0-9][0-9,]*(?:\\.[0-9]+)?(?:[eE][0-9]+)?)\\s*(.*?)\\s*$"));
    const QRegularExpressionMatch match = form.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    unit = match.captured(2);
    const QString digits = match.captured(1);
    if (const auto whole = wholeNumber(digits, 0, qint64(1) << 52))
        return static_cast<double>(*whole);
    bool ok = false;
    const double number = QString(digits).remove(QLatin1Char(',')).toDouble(&ok);
    return ok ? std::optional<double>(number) : std::nullopt;
}

/// Parses bytes, such as "4096", "4K", "4 KiB" (powers of 1024) or "4 kB", "4GB" (powers of 1000).
qint64 sizeOf(const Inputs& inputs, const char* option, qint64 usual, qint64 highest)
{
    if (!inputs.has(option))
        return usual;
    const QString text = inputs.option(option);
    QString unit;
    const std::optional<double> number = numberWithUnit(text, unit);
    const QString lower = unit.toLower();
    const int power = lower.isEmpty() ? 0 : QStringLiteral("bkmgt").indexOf(lower.at(0));
    const bool decimal = lower.size() == 2 && lower.at(1) == QLatin1Char('b');
    const bool known = lower.isEmpty() || lower == QLatin1String("b") ||
                       (power > 0 && (lower.size() == 1 || decimal || lower.mid(1) == QLatin1String("ib")));
    const double bytes = number.value_or(0) * std::pow(decimal ? 1000 : 1024, std::max(0, power));
    if (!number || !known || !(bytes >= 1 && bytes <= static_cast<double>(highest)))
        refuseOption(
            option, text,
            QStringLiteral(
                "a size from 1 to %1 bytes, such as 4096, 4K or 4 KiB (4096 bytes), or 4 kB (4000 bytes)")
                .arg(highest));
    return static_cast<qint64>(bytes);
}

double plainNumber(const Inputs& inputs, const char* option, double usual, double lowest, double highest)
{
    if (!inputs.has(option))
        return usual;
    QString unit;
    const std::optional<double> number = numberWithUnit(inputs.option(option), unit);
    if (!number || !unit.isEmpty() || *number < lowest || *number > highest)
        refuseOption(option, inputs.option(option),
                     QStringLiteral("a number from %1 to %2")
                         .arg(QString::number(lowest, 'f', 0), QString::number(highest, 'f', 0)));
    return *number;
}

/// Parses a rate such as "60", "0.5", "10/min" or "5/day"; without a unit, per hour.
double changesPerHour(const Inputs& inputs)
{
    if (!inputs.has("changes-per-hour"))
        return 0;
    const QString text = inputs.option("changes-per-hour");
    QString unit;
    const std::optional<double> number = numberWithUnit(text, unit);
    const struct
    {
        const char* name;
        double perHour;
    } units[] = {
        {"", 1}, {"/h", 1}, {"/hour", 1}, {"/s", 3600}, {"/min", minutesPerHour}, {"/day", 1 / hoursPerDay}};
    const auto known = std::find_if(std::begin(units), std::end(units),
                                    [&unit](const auto& one) { return unit == QLatin1String(one.name); });
    if (!number || known == std::end(units) || *number > 1e9)
        refuseOption("changes-per-hour", text,
                     QStringLiteral("a number from 0 to 1000000000, such as 60, 0.5, 2/s, 10/min or 5/day"));
    return *number * known->perHour;
}

const Medium* mediumOf(const Inputs& inputs)
{
    if (!inputs.has("medium"))
        return nullptr;
    for (const Medium& medium : media)
        if (inputs.option("medium") == QLatin1String(medium.key))
            return &medium;
    refuseOption("medium", inputs.option("medium"), QStringLiteral("sd, emmc, nor or nand"));
}

Question questionOf(const Inputs& inputs)
{
    const qint64 largest = qint64(1) << 50;
    const qint64 largestPiece = 1 << 30;
    const Medium* const medium = mediumOf(inputs);
    const Flash usual = medium ? medium->flash : Flash{4096, qint64(128) * 1024, 4, 0, 0, qint64(16) * 1024};
    const auto systemPages = static_cast<qint64>(
        plainNumber(inputs, "file-system-pages", static_cast<double>(usual.fileSystemPages), 0, 1000));
    return {{sizeOf(inputs, "page", usual.page, largestPiece),
             sizeOf(inputs, "erase-block", usual.eraseBlock, largestPiece), systemPages,
             sizeOf(inputs, "capacity", usual.capacity, largest),
             plainNumber(inputs, "endurance-cycles", usual.enduranceCycles, 1, 1e15),
             usual.fileSystemBytes * systemPages / std::max(qint64(1), usual.fileSystemPages),
             plainNumber(inputs, "sync-erasures", usual.erasuresOfSync, 0, 1000)},
            medium,
            changesPerHour(inputs),
            plainNumber(inputs, "years", 0, 0, 1000)};
}

/// Four digits, or all those before the point; with commas.
QString figureText(double number)
{
    const QLocale english(QLocale::English, QLocale::UnitedStates);
    if (number >= 1000 || number == std::floor(number))
        return english.toString(number, 'f', 0);
    QString text = QString::number(number, 'g', 4);
    return text.contains(QLatin1Char('e')) ? QString::number(number, 'f', 9) : text;
}

Value figure(double number)
{
    return {QJsonValue(number), figureText(number)};
}

/// Bytes, in the unit that people would use.
Value size(double bytes)
{
    const char* const units[] = {"bytes", "KiB", "MiB", "GiB", "TiB"};
    double number = bytes;
    std::size_t unit = 0;
    for (; number >= 1024 && unit + 1 < std::size(units); ++unit)
        number /= 1024;
    const QString text = bytes == 1 ? QStringLiteral("1 byte")
                                    : figureText(number) + QLatin1Char(' ') + QLatin1String(units[unit]);
    return {QJsonValue(bytes), text};
}

/// In years for scripts, in a suitable unit for people; null for 0 or less.
Value life(double years)
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
    const double number = years / unit->inYears;
    // Rounded down, so that the flash lasts at least that long.
    const double shown = number < 10 ? std::floor(number * 10) / 10 : std::floor(number);
    const QString text = shown > 0 ? figureText(shown) : QStringLiteral("under 0.1");
    return {years, QStringLiteral("%1 %2").arg(text, QLatin1String(unit->name))};
}

Words wordsOf(const WriteCase& one)
{
    switch (one.kind) {
    case WriteCase::Kind::Even:
        return {"even", QStringLiteral("changes spread over all cells")};
    case WriteCase::Kind::Worst:
        return {"worst", QStringLiteral("all changes in the most expensive block, %1 %2")
                             .arg(QLatin1String(one.area->name), rangeText(one.block->cells()))};
    case WriteCase::Kind::Save:
        break;
    }
    return {"saves", QStringLiteral("saves of whole areas")};
}

Table writeTable(const std::vector<WriteCase>& cases, const Question& question)
{
    Table table{"writes",
                "write",
                "Per write",
                {{"case", "Case"},
                 {"file_bytes", "To the files"},
                 {"file_pages", "Pages"},
                 {"system_pages", "File system pages"},
                 {"sent_bytes", "Sent to the medium"},
                 {"flash_bytes", "To the flash"}}};
    for (const WriteCase& one : cases)
        table.rows.push_back({wordsOf(one), size(one.fileBytes), figure(one.filePages),
                              figure(one.systemPages), size(one.sentBytes),
                              size(one.flashBytes(question.flash))});
    return table;
}

Table dayTable(const Layout& layout, const std::vector<WriteCase>& cases, const Question& question)
{
    const bool endurance = question.flash.enduranceCycles > 0;
    Table table{
        "days",
        "day",
        "Per day",
        {{"case", "Case"},
         {"writes", "Writes"},
         {"file_bytes", "To the files"},
         {"flash_bytes", "To the flash"},
         {"erasures_levelled", question.flash.erasuresOfSync > 0 ? "Erase cycles" : "Erase blocks filled"},
         {"levelled_years", endurance && question.flash.levelled() ? "Life, levelled" : nullptr},
         {"in_place_years", endurance && !question.flash.levelled() ? "Life, in place" : nullptr}}};
    const double writes = writesPerDay(layout, question.changesPerHour);
    if (writes <= 0)
        return table;
    for (const WriteCase& one : cases) {
        const double bytes = writes * one.flashBytes(question.flash);
        table.rows.push_back({wordsOf(one), figure(writes), size(writes * one.fileBytes), size(bytes),
                              figure(writes * one.erasures(question.flash)),
                              life(yearsOf(writesLevelled(question.flash, one), writes)),
                              life(yearsOf(writesInPlace(question.flash), writes))});
    }
    return table;
}

/// The most writes an hour for the wanted years.
double writesPerHour(double writes, const Question& question)
{
    return writes / (question.years * daysPerYear * hoursPerDay);
}

/// In the user's terms: changes an hour, or minutes between two saves, which cannot exceed 32767.
Value limit(const Layout& layout, double perHour)
{
    if (perHour <= 0)
        return {};
    if (layout.images()) {
        const double minutes = std::ceil(minutesPerHour / perHour);
        return {minutes, minutes > 32767 ? QStringLiteral("no Save Time is long enough")
                                         : QStringLiteral("at least %1 min").arg(figureText(minutes))};
    }
    if (perHour >= 1)
        return {perHour, figureText(std::floor(perHour))};
    return {perHour, QStringLiteral("1 change every %1 hours").arg(figureText(std::ceil(10 / perHour) / 10))};
}

Table limitTable(const Layout& layout, const std::vector<WriteCase>& cases, const Question& question)
{
    Table table{"limits",
                "limit",
                layout.images() ? "Save Time for the required life"
                                : "Highest number of changes per hour for the required life",
                {{"case", "Case"},
                 {"levelled_limit", question.flash.levelled() ? "Levelled" : nullptr},
                 {"in_place_limit", question.flash.levelled() ? nullptr : "In place"}}};
    if (question.flash.enduranceCycles <= 0 || question.years <= 0)
        return table;
    for (const WriteCase& one : cases)
        table.rows.push_back({wordsOf(one),
                              limit(layout, writesPerHour(writesLevelled(question.flash, one), question)),
                              limit(layout, writesPerHour(writesInPlace(question.flash), question))});
    return table;
}

Table blockTable(const Layout& layout, const Question& question)
{
    Table table{"blocks",
                "block",
                "Written to the file per change",
                {{"area", "Area"},
                 {"block", "Block"},
                 {nullptr, "Cells"},
                 {"cells"},
                 {"bytes", "Bytes"},
                 {"pages", "Pages"}}};
    for (const WrittenPiece& piece : writtenPieces(layout, question.flash))
        table.rows.push_back({piece.area->area->name, piece.block->number, piece.cells.text(), piece.cells,
                              piece.fileBytes, piece.filePages});
    return table;
}

Finding wornOut(const Layout& layout, const Question& question, const WriteCase& one)
{
    return {
        Finding::Severity::Error, "worn-out-early", wordsOf(one).text,
        QStringLiteral("the flash lasts %1 %2, less than the required %3 years.")
            .arg(life(yearsOf(writesSurvived(question.flash, one),
                              writesPerDay(layout, question.changesPerHour)))
                     .text,
                 QLatin1String(question.flash.levelled() ? "with wear levelling" : "without wear levelling"),
                 figureText(question.years)),
        layout.images()
            ? QStringLiteral("Increase \"Save Time\", or retain only the ranges that need it, with entries.")
            : QStringLiteral(
                  "Make retained cells change less often, give words that change often an entry of their "
                  "own, separate from large blocks, or use flash with wear levelling and more capacity.")};
}

std::vector<Fact> factsOf(const Layout& layout, const Question& question, const std::vector<WriteCase>& cases)
{
    const Flash& flash = question.flash;
    std::vector<Fact> facts = {{"mode", "Mode", layout.settings.mode}};
    if (layout.images())
        facts.push_back({"period_minutes",
                         "Save period",
                         {QJsonValue(int(layout.settings.saveTimeMinutes)),
                          QStringLiteral("%1 minutes").arg(layout.settings.saveTimeMinutes)}});
    else if (question.changesPerHour > 0)
        facts.push_back({"changes_per_hour", "Changes per hour", figure(question.changesPerHour)});
    if (question.medium)
        facts.push_back(
            {"medium", "Medium",
             Words{question.medium->key,
                   QStringLiteral("%1; the \"levelled\" figures apply, because %2 levels the wear")
                       .arg(QLatin1String(question.medium->name),
                            QLatin1String(question.medium->levelledBy))}});
    facts.push_back({"page", "Page", size(static_cast<double>(flash.page))});
    facts.push_back({"erase_block", "Erase block", size(static_cast<double>(flash.eraseBlock))});
    facts.push_back({"file_system_pages", "File system pages", flash.fileSystemPages});
    if (flash.erasuresOfSync > 0)
        facts.push_back({"sync_erasures", "Erase cycles per sync", figure(flash.erasuresOfSync)});
    if (flash.capacity > 0)
        facts.push_back({"capacity", "Capacity", size(static_cast<double>(flash.capacity))});
    if (flash.enduranceCycles > 0)
        facts.push_back({"endurance_cycles", "Erase cycles per block", figure(flash.enduranceCycles)});
    const std::vector<std::vector<Value>> limits = limitTable(layout, cases, question).rows;
    if (limits.empty())
        return facts;
    const Value& most = limits.back()[question.flash.levelled() ? 1 : 2]; // the worst case comes last
    const QString answer = layout.images() ? QStringLiteral("Save Time %1").arg(most.text)
                           : most.data.toDouble() < 1
                               ? QStringLiteral("at most %1").arg(most.text)
                               : QStringLiteral("at most %1 changes per hour").arg(most.text);
    facts.push_back({"years", nullptr, figure(question.years)});
    facts.push_back(
        {"answer", "Result", QStringLiteral("for %1 years: %2").arg(figureText(question.years), answer)});
    return facts;
}

/// What all programs write to the device that holds a directory, and how long the flash lasts at that rate.
void addMeasurement(const Inputs& inputs, const Question& question, Report& report)
{
    const QString directory = inputs.option("directory");
    const double longest = 7 * hoursPerDay * minutesPerHour * secondsPerMinute;
    const auto seconds = static_cast<unsigned>(plainNumber(inputs, "measure", 0, 1, longest));
    const DeviceWrites before = deviceWrites(directory);
    Progress progress(seconds, "measuring");
    for (unsigned second = 0; second < seconds; ++second) {
        std::this_thread::sleep_for(std::chrono::seconds(1));
        progress.step();
    }
    const DeviceWrites after = deviceWrites(directory);
    const auto bytes = static_cast<double>(after.bytes - before.bytes);
    const double day = bytes * hoursPerDay * minutesPerHour * secondsPerMinute / seconds;
    report.facts.push_back(
        {"measured_device", "Measured", QStringLiteral("%1, which holds %2").arg(after.device, directory)});
    report.facts.push_back({"measured_seconds", "  seconds", static_cast<qint64>(seconds)});
    report.facts.push_back(
        {"measured_requests", "  writes by all programs", after.requests - before.requests});
    report.facts.push_back({"measured_bytes", "  amount written", size(bytes)});
    report.facts.push_back({"measured_day_bytes", "  per day at this rate", size(day)});
    if (question.flash.levelled() && question.flash.enduranceCycles > 0 && day > 0)
        report.facts.push_back(
            {"measured_years", "  life, levelled",
             life(yearsOf(question.flash.enduranceCycles * static_cast<double>(question.flash.capacity),
                          day))});
    report.notes.append(QStringLiteral("The measurement is what the kernel sent to the device for all "
                                       "programs; internally, the device may write several times as much."));
}

void addNotes(const Layout& layout, const Question& question, Report& report)
{
    if (question.medium)
        report.notes.append(QStringLiteral("The figures assumed for %1 are typical of a small device; use "
                                           "the options to replace them with those in its data sheet.")
                                .arg(QLatin1String(question.medium->name)));
    if (question.flash.enduranceCycles <= 0)
        report.notes.append(QStringLiteral("To see how long the flash lasts, name its kind with --medium, or "
                                           "give --endurance-cycles and --capacity from its data sheet."));
    else if (question.flash.levelled())
        report.notes.append(QStringLiteral(
            "\"Levelled\" assumes that the writes are spread over the whole capacity, as by the "
            "controllers of SD cards and eMMC and, on NOR and NAND flash, by UBIFS or JFFS2."));
    else
        report.notes.append(QStringLiteral(
            "\"In place\" assumes that nothing levels the wear, so that each write erases the "
            "same block, as on NOR flash or EEPROM that FAT or ext4 writes directly. For an SD "
            "card, eMMC or UBIFS, give --medium or --capacity."));
    report.notes.append(
        QStringLiteral("These figures are a model, not a measurement: files start on a page boundary, every "
                       "write reaches the flash at once, and the file system adds its own pages. \"Sent to "
                       "the medium\" is within 25 percent of measurements on an emulated panel with ext4 "
                       "and, for incompressible data, UBIFS. %1")
            .arg(layout.images()
                     ? QStringLiteral("Each save writes all three files.")
                     : QStringLiteral("A changed bit writes its byte, a changed word its whole block.")));
}

Report run(const Inputs& inputs)
{
    const Layout& layout = inputs.layout();
    const Question question = questionOf(inputs);
    if (layout.settings.mode == RetentionMode::PerAddress && !inputs.has("changes-per-hour") &&
        !inputs.has("measure") && question.flash.enduranceCycles <= 0)
        throw Refusal(
            QStringLiteral("wear: expected --changes-per-hour N or --medium sd|emmc|nor|nand, because this "
                           "project writes every change"));
    const std::vector<WriteCase> cases = writeCases(layout, question.flash);
    Report report;
    report.facts = factsOf(layout, question, cases);
    if (inputs.has("measure"))
        addMeasurement(inputs, question, report);
    report.tables = {dayTable(layout, cases, question), limitTable(layout, cases, question),
                     writeTable(cases, question)};
    if (!layout.images())
        report.tables.push_back(blockTable(layout, question));
    report.findings = settingsFindings(layout.settings);
    const double writes = writesPerDay(layout, question.changesPerHour);
    const auto tooMuch = std::find_if(cases.begin(), cases.end(), [&](const WriteCase& one) {
        return question.flash.enduranceCycles > 0 && writes > 0 &&
               yearsOf(writesSurvived(question.flash, one), writes) < question.years;
    });
    if (tooMuch != cases.end()) // the cases that follow are worse
        report.findings.push_back(wornOut(layout, question, *tooMuch));
    if (cases.empty() || (layout.images() && writes <= 0))
        report.notes.append(QStringLiteral("There are no writes to calculate with."));
    addNotes(layout, question, report);
    return report;
}

} // namespace

extern const Command wearCommand = {
    "wear",
    {{"PROJECT.xml", Argument::Kind::Project}},
    "what is written per day, how long the flash lasts, and how many changes it allows",
    "Calculates what the project writes and, with --medium or with --endurance-cycles and --capacity, how "
    "long\n"
    "the flash lasts and how many changes per hour it allows for the required life. Sizes are in bytes or "
    "end in\n"
    "K, KiB, M, MiB, G, GiB (powers of 1024) or kB, MB, GB (powers of 1000).",
    "project.xml --medium emmc\n"
    "project.xml --medium sd --changes-per-hour 10/min\n"
    "project.xml --changes-per-hour 60 --endurance-cycles 3000 --capacity 4G --erase-block 512K\n"
    "project.xml --medium emmc --measure 3600",
    {{"changes-per-hour", "N",
      "Changes of retained cells per hour, or with a unit, such as 2/s, 10/min or 5/day"},
     {"medium", "KIND",
      "Kind of flash: sd, emmc, nor or nand; sets typical values for the following options"},
     {"endurance-cycles", "N", "Erase cycles that an erase block endures, from the flash's data sheet"},
     {"capacity", "SIZE",
      "Capacity over which the wear is levelled (default without --medium: no levelling)"},
     {"erase-block", "SIZE", "Size of an erase block (default without --medium: 128K)"},
     {"page", "SIZE", "Smallest unit written to the flash (default without --medium: 4K)"},
     {"file-system-pages", "N",
      "Pages that the file system adds to every write (default without --medium: 4)"},
     {"sync-erasures", "N", "Additional erase cycles per sync (default: 1 for nor and nand, otherwise 0)"},
     {"years", "N", "Years that the flash must last", "10"},
     {"measure", "SECONDS",
      "Also count, for this many seconds, what is written to the device that holds --directory"},
     {"directory", "DIR", "A directory on that device", "/usr/tavrin/project"}},
    run};
