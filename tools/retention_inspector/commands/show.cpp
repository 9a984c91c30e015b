// Shows kept values by address: rows of ten for people, one by one for scripts.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/cell_words.h"
#include "tools/retention_core/kept_values.h"
#include "tools/retention_core/refusal.h"
#include "tools/retention_inspector/command.h"
#include "tools/retention_inspector/report/named_values.h"

#include <algorithm>
#include <iterator>

namespace {

const qint64 cellsInRow = 10;

/// The cells of one row, or of several rows that hold the same: zeros or nothing.
struct Row
{
    enum class Content
    {
        Values,
        Zeros,
        Nothing
    };

    CellRange cells;
    Content content;
};

Row::Content contentOf(const AreaValues& values, const CellRange& cells)
{
    bool zeros = true;
    bool nothing = true;
    for (qint64 cell = cells.first; cell <= cells.last; ++cell) {
        const auto at = static_cast<std::size_t>(cell);
        const bool hasValue = values.hasValue(at);
        zeros = zeros && hasValue && values.values[at] == 0;
        nothing = nothing && !hasValue;
    }
    return zeros ? Row::Content::Zeros : nothing ? Row::Content::Nothing : Row::Content::Values;
}

std::vector<Row> rowsOf(const AreaValues& values, const CellRange& range)
{
    std::vector<Row> rows;
    for (qint64 first = range.first; first <= range.last; first += cellsInRow) {
        const CellRange cells = {first, std::min(first + cellsInRow - 1, range.last)};
        const Row::Content content = contentOf(values, cells);
        if (content != Row::Content::Values && !rows.empty() && rows.back().content == content)
            rows.back().cells.last = cells.last;
        else
            rows.push_back({cells, content});
    }
    return rows;
}

/// How the user wants values written.
struct Digits
{
    bool hexadecimal;

    QString text(const AreaValues& values, std::size_t cell) const
    {
        const ushort value = values.values[cell];
        return hexadecimal && !values.area->bits ? QStringLiteral("0x%1").arg(value, 4, 16, QLatin1Char('0'))
                                                 : QString::number(value);
    }
    Value value(const AreaValues& values, std::size_t cell) const
    {
        return hexadecimal && !values.area->bits ? Value(text(values, cell)) : Value(values.values[cell]);
    }
    int width(const AreaFacts& area) const { return area.bits ? 1 : hexadecimal ? 6 : 5; }
};

QString rowText(const AreaValues& values, const Row& row, const Digits& digits)
{
    if (row.content == Row::Content::Nothing)
        return QStringLiteral("no value");
    if (row.content == Row::Content::Zeros && row.cells.last - row.cells.first >= cellsInRow)
        return QStringLiteral("all 0");
    QString text;
    for (qint64 cell = row.cells.first; cell <= row.cells.last; ++cell) {
        const auto at = static_cast<std::size_t>(cell);
        const QString value = values.hasValue(at) ? digits.text(values, at) : QStringLiteral("-");
        text += value.rightJustified(digits.width(*values.area)) + QLatin1Char(' ');
    }
    text.chop(1);
    return text;
}

void addArea(const AreaReading& reading, const CellRanges& wanted, const Digits& digits, Table& rows,
             Table& cells)
{
    const AreaValues& values = reading.values;
    for (const CellRange& range : wanted) {
        for (const Row& row : rowsOf(values, range)) {
            const bool doubtful = reading.doubtful() && row.content != Row::Content::Nothing;
            if (doubtful)
                rows.columns.back().title = "State";
            rows.rows.push_back({values.area->name, rangeText(row.cells), rowText(values, row, digits),
                                 doubtful ? "doubtful" : ""});
        }
        for (qint64 cell = range.first; cell <= range.last; ++cell) {
            const auto at = static_cast<std::size_t>(cell);
            cells.rows.push_back({values.area->name, cell,
                                  values.hasValue(at) ? digits.value(values, at) : Value(),
                                  stateOf(reading, {cell, cell})});
        }
    }
}

void addNotes(const AreaValues& values, const CellRanges& wanted, const RetentionFile& file, Report& report)
{
    const auto add = [&](const QString& note) {
        report.notes.append(QStringLiteral("%1: %2").arg(file.path, note));
    };
    const auto count = [&](CellState state) {
        return wanted.count() - wanted.minus(values.cellsIn(state)).count();
    };
    const bool missing = file.state == RetentionFile::State::Missing;
    if (const qint64 without = count(CellState::NoValue))
        add(QStringLiteral("%1, so %2 no value.")
                .arg(QLatin1String(missing ? "the file does not exist"
                                           : "the file is too short for this project"),
                     countText(without, "cell") + QLatin1String(without == 1 ? " has" : " have")));
    if (const qint64 bits = count(CellState::StartValue))
        add(QStringLiteral(
                "%1 in all-zero bytes; the next start leaves these cells at the panel's own start values.")
                .arg(countText(bits, "bit") + QLatin1String(bits == 1 ? " is" : " are")));
}

const AreaFacts* wantedArea(const Inputs& inputs)
{
    const QString name = inputs.option("area");
    const AreaFacts* const area = areaNamed(name);
    if (inputs.has("area") && !area)
        throw Refusal(QStringLiteral("--area \"%1\": expected LB, LW or RWI").arg(name));
    return area;
}

CellRange wantedAddresses(const Inputs& inputs)
{
    if (!inputs.has("address"))
        return {0, 65535};
    const QString text = inputs.option("address");
    const std::optional<CellRange> range = addressRange(text);
    if (!range)
        throw Refusal(
            QStringLiteral("--address \"%1\": expected an address from 0 to 65535, or two such as 100-109")
                .arg(text));
    return *range;
}

/// The cells of the entries that the user asked for, in one area.
CellRanges entryCells(const Inputs& inputs, const AreaFacts& area)
{
    const QString name = inputs.option("entry");
    std::vector<CellRange> cells;
    QStringList known;
    for (const ProjectEntry& entry : inputs.layout().settings.entries) {
        if (entry.name == name && entry.area == &area)
            cells.push_back({entry.first(), entry.last()});
        known.append(entry.name);
    }
    if (!known.contains(name))
        throw Refusal(known.isEmpty() ? QStringLiteral("--entry \"%1\": the project has no entries").arg(name)
                                      : QStringLiteral("--entry \"%1\": expected one of %2")
                                            .arg(name, known.join(QLatin1String(", "))));
    return CellRanges(std::move(cells));
}

/// The cells that the user asked for in one area, retained or not.
CellRanges askedCells(const Inputs& inputs, const AreaFacts& area)
{
    const AreaFacts* const only = wantedArea(inputs);
    if (only && only != &area)
        return {};
    if (!inputs.has("entry"))
        return CellRanges({wantedAddresses(inputs)});
    const CellRanges cells = entryCells(inputs, area);
    return inputs.has("address") ? cells.within(wantedAddresses(inputs)) : cells;
}

/// Of these, the cells to show.
CellRanges wantedCells(const Inputs& inputs, const AreaValues& values, const CellRanges& asked)
{
    CellRanges wanted = both(inputs.layout().of(*values.area).kept, asked);
    if (!inputs.has("nonzero"))
        return wanted;
    std::vector<CellRange> set;
    for (const CellRange& range : wanted)
        for (qint64 cell = range.first; cell <= range.last; ++cell)
            if (values.values[static_cast<std::size_t>(cell)] != 0)
                set.push_back({cell, cell});
    return CellRanges(std::move(set));
}

/// In the order of areaFacts.
using AskedCells = std::array<CellRanges, areaCount>;

/// Whether an error of the project is why cells that the user asked for are not retained.
bool concerns(const Finding& finding, const AskedCells& asked, const Inputs& inputs)
{
    const Layout& layout = inputs.layout();
    if (finding.severity != Finding::Severity::Error)
        return false;
    const AreaFacts* const area = areaNamed(finding.area);
    if (area && !finding.cells.isEmpty())
        return !both(finding.cells, asked[static_cast<std::size_t>(area - areaFacts)])
                    .minus(layout.of(*area).kept)
                    .isEmpty();
    return finding.entry > 0 && inputs.has("entry") &&
           layout.settings.entries[static_cast<std::size_t>(finding.entry) - 1].name ==
               inputs.option("entry");
}

/// About addresses of which no cell is retained, and none is in an entry.
Finding notRetained(const Inputs& inputs)
{
    const AreaFacts* const area = wantedArea(inputs);
    const CellRanges cells({wantedAddresses(inputs)});
    const QString name = QString::fromLatin1(area ? area->name : "");
    const bool neverWritten = area && cells.minus(ignoredCells(*area)).isEmpty();
    const char* const remedy = neverWritten ? "Use another bit: the module never writes changes of this one."
                                            : "Check area and address, and what \"layout\" finds about the "
                                              "entries; to retain a cell, add an entry that contains it.";
    return {Finding::Severity::Error,
            "not-retained",
            (area ? name : QStringLiteral("LB, LW, RWI")) + QLatin1Char(' ') + cells.text(),
            QString::fromLatin1(
                inputs.layout().settings.mode == RetentionMode::None ? "the project retains nothing."
                : area && cells.count() == 1 ? "no entry contains this cell, so it is not retained."
                                             : "no entry contains these cells, so they are not retained."),
            QString::fromLatin1(remedy),
            name,
            cells};
}

/// Why cells that the user named are not retained; none when they are, or when no cells were named.
std::vector<Finding> lossFindings(const Inputs& inputs, const AskedCells& asked)
{
    std::vector<Finding> findings;
    if (!inputs.has("address") && !inputs.has("entry"))
        return findings;
    for (Finding& finding : projectFindings(inputs.layout()))
        if (concerns(finding, asked, inputs))
            findings.push_back(std::move(finding));
    bool anyRetained = false;
    for (std::size_t i = 0; i < asked.size(); ++i)
        anyRetained = anyRetained || !both(inputs.layout().areas[i].kept, asked[i]).isEmpty();
    if (findings.empty() && !anyRetained && !inputs.has("entry"))
        findings.push_back(notRetained(inputs));
    return findings;
}

Report run(const Inputs& inputs)
{
    const Digits digits = {inputs.has("hex")};
    const AreaReadings readings = readAreas(inputs.layout(), inputs.files.front());
    Report report;
    report.facts.push_back({"mode", "Mode", inputs.layout().settings.mode});
    report.findings = findingsOf(readings);
    report.findingsFirst = true;
    Table rows{nullptr,
               nullptr,
               "Retained values",
               {{nullptr, "Area"}, {nullptr, "Addresses"}, {nullptr, "Values"}, {nullptr}}};
    Table cells{"cells", "cell", nullptr, {{"area"}, {"address"}, {"value"}, {"state"}}};
    const std::optional<Tags> tags = tagsOf(inputs);
    Table named = namedValues();
    AskedCells asked;
    for (std::size_t i = 0; i < readings.size(); ++i) {
        asked[i] = askedCells(inputs, areaFacts[i]);
        const CellRanges wanted = wantedCells(inputs, readings[i].values, asked[i]);
        addArea(readings[i], wanted, digits, rows, cells);
        addNotes(readings[i].values, wanted, inputs.files.front()[i], report);
        if (tags)
            addNamedValues(inputs.layout(), readings[i], *tags, wanted, false, named, report.findings);
    }
    std::vector<Finding> losses = lossFindings(inputs, asked);
    if (cells.rows.empty() && (losses.empty() || inputs.has("nonzero")))
        report.notes.append(inputs.has("nonzero")
                                ? QStringLiteral("None of the selected cells has a value other than 0.")
                                : QStringLiteral("The project retains none of the selected cells."));
    std::move(losses.begin(), losses.end(), std::back_inserter(report.findings));
    report.addNote(projectNote(inputs.layout()));
    report.tables = {std::move(rows), std::move(cells)};
    if (tags) {
        report.tables.front() = std::move(named); // in place of the rows of cells
        addTagRemarks(inputs.layout(), *tags, report);
    }
    return report;
}

} // namespace

extern const Command showCommand = {
    "show",
    {{"PROJECT.xml", Argument::Kind::Project}, {"DIR", Argument::Kind::Files}},
    "retained values by address",
    "Shows the values in the files of DIR by address, after the findings of \"check\": values in files that\n"
    "do not fit the project belong to other cells. When --address or --entry names cells of which none\n"
    "is retained, or of which an error in the project loses some, a finding says why.",
    "project.xml /usr/tavrin/project\nproject.xml copy --area LW --address 100-109 --hex\n"
    "project.xml copy --entry recipe --watch",
    {{"area", "AREA", "Only this area: LB, LW or RWI"},
     {"address", "A[-B]", "Only these addresses, such as 100 or 100-109"},
     {"entry", "NAME", "Only the cells of the entry with this name"},
     {"tags", "TAGS.csv", "Values by name, type and unit instead of cells"},
     {"nonzero", nullptr, "Only values other than 0"},
     {"hex", nullptr, "Words in hexadecimal"},
     {"watch", nullptr, "Keep running and print a line for each change, until interrupted"}},
    run};
