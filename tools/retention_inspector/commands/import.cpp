// Makes new files with the values of a table.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/refusal.h"
#include "tools/retention_core/value_table.h"
#include "tools/retention_inspector/command.h"

#include <algorithm>
#include <map>

namespace {

std::size_t index(qint64 cell)
{
    return static_cast<std::size_t>(cell);
}

/// The values of one area before and after.
struct AreaChange
{
    AreaReading before;        ///< of the old file; all zero without one
    std::vector<ushort> after; ///< of every cell
    bool changed = false;
};

using Changes = std::array<AreaChange, areaCount>;

/// Refuses files that would carry doubtful values over.
void requireFitting(const AreaReading& reading)
{
    if (reading.misfit)
        throw Refusal(QStringLiteral("%1: %2 Leave out DIR, so that all cells not in the table are 0, or "
                                     "name a directory whose files fit the project.")
                          .arg(reading.findings.front().place, reading.findings.front().problem));
}

Changes startingPoint(const Inputs& inputs)
{
    Changes changes;
    for (std::size_t i = 0; i < areaCount; ++i) {
        AreaChange& change = changes[i];
        if (!inputs.files.empty()) {
            change.before = readArea(inputs.layout(), inputs.files.front()[i]);
            requireFitting(change.before);
        } else {
            const CellRanges& kept = inputs.layout().areas[i].kept;
            change.before.values.area = &areaFacts[i];
            change.before.values.values.resize(index(cellCount(areaFacts[i])));
            change.before.values.states.resize(index(cellCount(areaFacts[i])));
            for (const CellRange& range : kept)
                std::fill(change.before.values.states.begin() + range.first,
                          change.before.values.states.begin() + range.last + 1, CellState::Kept);
        }
        change.after = change.before.values.values;
    }
    return changes;
}

/// Sets the cells of a line; false when they have these values already.
bool apply(const ValueLine& line, Changes& changes)
{
    AreaChange& change = changes[static_cast<std::size_t>(line.area - areaFacts)];
    const auto at = change.after.begin() + line.first;
    if (std::equal(line.cells.begin(), line.cells.end(), at))
        return false;
    std::copy(line.cells.begin(), line.cells.end(), at);
    change.changed = true;
    return true;
}

/// The text of a value that may not be valid for its type.
Value valueOf(const ValueType& type, const ushort* cells)
{
    const QString text = valueText(type, cells);
    if (!text.isNull())
        return text;
    QStringList words;
    for (int i = 0; i < type.cells(); ++i)
        words.append(QString::number(cells[i]));
    return words.join(QLatin1Char(' '));
}

Table applyAll(const std::vector<ValueLine>& lines, const QString& path, Changes& changes)
{
    Table table{"changes",
                "change",
                "Changes",
                {{"area", "Area"},
                 {"address", "Address"},
                 {"name", "Name"},
                 {"type", "Type"},
                 {"old", "Old"},
                 {"new", "New"}}};
    LineErrors errors;
    for (const ValueLine& line : lines) {
        const AreaChange& change = changes[static_cast<std::size_t>(line.area - areaFacts)];
        const std::vector<ushort> old(change.after.begin() + line.first,
                                      change.after.begin() + line.first + qint64(line.cells.size()));
        if (!apply(line, changes))
            continue;
        if (change.before.values.oddBytes > 0)
            errors.add(
                QStringLiteral("%1:%2: the LB image contains bytes other than 0 and 1, so it is not known "
                               "which of them is this bit; remove the line, and set the bit on the panel")
                    .arg(path)
                    .arg(line.line));
        table.rows.push_back({line.area->name, line.first, line.name, line.type.text(),
                              valueOf(line.type, old.data()), valueOf(line.type, line.cells.data())});
    }
    errors.refuseIfAny();
    return table;
}

bool writeArea(const AreaLayout& layout, const AreaChange& change, const RetentionFile* old, QFile& file)
{
    if (old && old->state == RetentionFile::State::Readable) {
        const QByteArray bytes = old->read(0, layout.fileLength);
        if (bytes.size() != layout.fileLength || file.write(bytes) != bytes.size())
            return false;
    } else if (!file.resize(layout.fileLength)) {
        return false;
    }
    return !change.changed || writeValues(layout, change.after, file);
}

/// Bits that the table sets to 0 but that the next start leaves as the panel has them.
qint64 unsetZeros(const Layout& layout, const Changes& changes, const QString& directory)
{
    qint64 bits = 0;
    for (const RetentionFile& file : openRetentionFiles(directory)) {
        const AreaValues made = areaValues(layout, file);
        const AreaValues& before = changes[static_cast<std::size_t>(file.area - areaFacts)].before.values;
        for (std::size_t cell = 0; cell < made.states.size(); ++cell)
            bits += made.states[cell] == CellState::StartValue && before.values[cell] != 0;
    }
    return bits;
}

Report run(const Inputs& inputs)
{
    const Layout& layout = inputs.layout();
    const std::vector<ValueLine> lines = readValueLines(inputs.paths.front(), layout);
    Changes changes = startingPoint(inputs);
    Table table = applyAll(lines, inputs.paths.front(), changes);
    makeRetentionFiles(inputs.option("output"), [&](const AreaFacts& area, QFile& file) {
        const auto i = static_cast<std::size_t>(&area - areaFacts);
        return writeArea(layout.areas[i], changes[i],
                         inputs.files.empty() ? nullptr : &inputs.files.front()[i], file);
    });
    Report report;
    report.facts = {{"mode", "Mode", layout.settings.mode},
                    {"output", "Written to", inputs.option("output")},
                    {"values", "Values in the table", qint64(lines.size())},
                    {"changed", "Changed", qint64(table.rows.size())}};
    report.tables.push_back(std::move(table));
    if (const qint64 bits = unsetZeros(layout, changes, inputs.option("output")))
        report.notes.append(
            QStringLiteral("%1 to 0 in all-zero bytes; the next start leaves these cells at the panel's own "
                           "start values.")
                .arg(countText(bits, "bit") + QLatin1String(bits == 1 ? " is set" : " are set")));
    report.addNote(projectNote(layout));
    if (layout.images())
        report.notes.append(QStringLiteral("How a panel lays out the bits of its LB image is not defined; "
                                           "one byte per bit was assumed. Words are not affected."));
    return report;
}

} // namespace

extern const Command importCommand = {
    "import",
    {{"PROJECT.xml", Argument::Kind::Project},
     {"VALUES.csv", Argument::Kind::Path},
     {"DIR", Argument::Kind::Files, Argument::Count::AtMostOne}},
    "new files from the values in a table",
    "Creates a new directory with the files of the project. Each line of the table sets one value, in the "
    "form\n"
    "that \"export\" writes (area, address and value are required; name, type and state are optional; - is\n"
    "standard input). Cells not in the table keep their value from the files of DIR or, without DIR, are 0.\n"
    "Lists each change. If a line cannot be applied, all such lines are listed and nothing is created.",
    "project.xml values.csv /usr/tavrin/project --output edited\nproject.xml values.csv --output new_panel",
    {{"output", "NEW", "Directory to create; it must be empty or not exist yet", nullptr,
      Option::Kind::Required}},
    run};
