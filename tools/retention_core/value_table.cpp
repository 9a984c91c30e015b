// Joins cells to values by tags, and splits lines of a table into cells.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/value_table.h"

#include "tools/retention_core/refusal.h"

#include <algorithm>
#include <map>
#include <utility>

namespace {

std::size_t index(qint64 cell)
{
    return static_cast<std::size_t>(cell);
}

/// A name such as "recipe[3]", from the first entry that names the cell; empty for none.
class EntryNames
{
public:
    EntryNames(const Layout& layout, const AreaFacts& area) : settings(layout.settings)
    {
        if (layout.images())
            return;
        for (const LayoutBlock& block : layout.of(area).blocks)
            blocks.push_back(&block);
    }

    QString of(qint64 cell) const
    {
        const auto after =
            std::upper_bound(blocks.begin(), blocks.end(), cell,
                             [](qint64 at, const LayoutBlock* block) { return at < block->first(); });
        if (after == blocks.begin())
            return {};
        for (const int number : (*(after - 1))->entries) {
            const ProjectEntry& entry = settings.entries[index(number - 1)];
            if (entry.first() <= cell && cell <= entry.last())
                return entry.length() == 1
                           ? entry.name
                           : QStringLiteral("%1[%2]").arg(entry.name).arg(cell - entry.first());
        }
        return {};
    }

private:
    std::vector<const LayoutBlock*> blocks; ///< ascending
    const ProjectSettings& settings;
};

Finding foreignBits(const RetentionFile& file, qint64 oddBytes)
{
    return {Finding::Severity::Error,
            "foreign-bit-image",
            file.path,
            QStringLiteral("%1 neither 0 nor 1, so this panel does not store one bit per byte, and which "
                           "value belongs to which bit is not known.")
                .arg(countText(oddBytes, "byte") + QLatin1String(oddBytes == 1 ? " is" : " are")),
            QStringLiteral("Read the bits on the panel itself."),
            QString::fromLatin1(file.area->name)};
}

Finding notOfType(const ValueRow& row, const Tags& tags)
{
    return {Finding::Severity::Warning,
            "not-of-type",
            QStringLiteral("%1:%2: \"%3\", %4 %5")
                .arg(tags.fileName)
                .arg(row.tag->line)
                .arg(row.name, QLatin1String(row.area->name), rangeText(row.cells())),
            QStringLiteral("its cells do not hold a valid %1, so they are shown one by one.")
                .arg(row.type.text()),
            QStringLiteral("Check the tag's address and type."),
            QString::fromLatin1(row.area->name),
            CellRanges({row.cells()})};
}

bool hasAll(const AreaValues& values, const CellRange& cells)
{
    for (qint64 cell = cells.first; cell <= cells.last; ++cell)
        if (!values.hasValue(index(cell)))
            return false;
    return true;
}

/// Takes lines one by one; throws a Refusal about a line that cannot be kept.
class LineTaker
{
public:
    LineTaker(const CsvTable& table, const Layout& layout) : table(table), layout(layout) {}

    std::optional<ValueLine> take(const CsvTable::Row& row)
    {
        ValueLine line;
        line.line = row.line;
        line.area = &areaOf(table.field(row, "area").trimmed());
        line.first = addressOf(table.field(row, "address"));
        line.name = plainText(table.field(row, "name"));
        const QString type = table.field(row, "type");
        line.type = type.trimmed().isEmpty() ? cellType(line.area->bits) : valueTypeOf(type);
        if (line.type.isBit() != line.area->bits)
            throw Refusal(
                QStringLiteral("the type %1 does not fit %2, whose cells are %3; change the type or the area")
                    .arg(line.type.text(), QLatin1String(line.area->name),
                         QLatin1String(line.area->bits ? "bits" : "words")));
        const QString value = table.field(row, "value");
        const QString state = table.field(row, "state").trimmed();
        if (state == QLatin1String("no-value") && value.trimmed().isEmpty())
            return std::nullopt;
        requireState(state);
        const bool isText = line.type.kind == ValueType::Kind::String;
        if (!isText && value.trimmed().isEmpty())
            throw Refusal(QStringLiteral("the value is missing; add one, or remove the line"));
        requireKept(line);
        line.cells = cellsOfValue(line.type, isText ? plainText(value) : value);
        requireFirst(line);
        return line;
    }

private:
    static void requireState(const QString& state)
    {
        if (state == QLatin1String("doubtful"))
            throw Refusal(QStringLiteral("the value is doubtful, because its file did not fit the project; "
                                         "correct it and set the state to \"kept\", or remove the line"));
        for (const char* known : {"", "kept", "start-value", "no-value"})
            if (state == QLatin1String(known))
                return;
        throw Refusal(QStringLiteral("state \"%1\": expected kept, start-value or no-value").arg(state));
    }

    void requireKept(const ValueLine& line) const
    {
        const CellRange cells = {line.first, line.first + line.type.cells() - 1};
        const CellRanges lost = CellRanges({cells}).minus(layout.of(*line.area).kept);
        if (!lost.isEmpty())
            throw Refusal(
                QStringLiteral("the project does not retain %1 %2; remove the line, or add an entry for it")
                    .arg(QLatin1String(line.area->name), lost.text()));
    }

    void requireFirst(const ValueLine& line)
    {
        for (qint64 cell = line.first; cell < line.first + qint64(line.cells.size()); ++cell) {
            int& taken = lines[{line.area, cell}];
            if (taken != 0)
                throw Refusal(
                    QStringLiteral("%1 %2 already has a value in line %3; remove one of the two lines")
                        .arg(QLatin1String(line.area->name))
                        .arg(cell)
                        .arg(taken));
            taken = line.line;
        }
    }

    const CsvTable& table;
    const Layout& layout;
    std::map<std::pair<const AreaFacts*, qint64>, int> lines; ///< that gave a cell its value
};

} // namespace

AreaReading readArea(const Layout& layout, const RetentionFile& file)
{
    AreaReading reading{areaValues(layout, file), checkFile(layout, file).findings};
    // Bytes after a whole image do not matter; any other misfit may mean another project.
    const bool wholeImage = layout.images() && file.state == RetentionFile::State::Readable &&
                            file.size >= layout.of(*file.area).fileLength;
    reading.misfit = !reading.findings.empty() && !wholeImage;
    if (reading.values.oddBytes > 0)
        reading.findings.push_back(foreignBits(file, reading.values.oddBytes));
    return reading;
}

AreaReadings readAreas(const Layout& layout, const RetentionFiles& files)
{
    AreaReadings readings;
    for (std::size_t i = 0; i < areaCount; ++i)
        readings[i] = readArea(layout, files[i]);
    return readings;
}

void forEachValue(const Layout& layout, const AreaReading& reading, const Tags* tags,
                  std::vector<Finding>& findings, const std::function<void(const ValueRow& row)>& take)
{
    const AreaFacts& area = *reading.values.area;
    const EntryNames names(layout, area);
    for (const CellRange& range : layout.of(area).kept) {
        for (qint64 cell = range.first; cell <= range.last; ++cell) {
            const Tag* const tag = tags ? tags->of(area, cell) : nullptr;
            ValueRow row{&area, cell, cellType(area.bits), tag, tag ? tag->name : names.of(cell)};
            if (tag && tag->first == cell && tag->cells().last <= range.last &&
                hasAll(reading.values, tag->cells())) {
                row.type = tag->type;
                if (!textOf(reading.values, row).isNull()) {
                    take(row);
                    cell = row.cells().last;
                    continue;
                }
                findings.push_back(notOfType(row, *tags));
                row.type = cellType(area.bits);
            }
            if (tag && tag->type.cells() > 1)
                row.name += QStringLiteral("[%1]").arg(cell - tag->first);
            take(row);
        }
    }
}

QString textOf(const AreaValues& values, const ValueRow& row)
{
    return hasAll(values, row.cells()) ? valueText(row.type, &values.values[index(row.first)]) : QString();
}

const char* stateOf(const AreaReading& reading, const CellRange& cells)
{
    if (!hasAll(reading.values, cells))
        return "no-value";
    const bool startValue = reading.values.states[index(cells.first)] == CellState::StartValue; // of a bit
    return reading.doubtful() ? "doubtful" : startValue ? "start-value" : "kept";
}

std::vector<ValueLine> readValueLines(const QString& path, const Layout& layout)
{
    const CsvTable table =
        readCsvTable(path, {QStringLiteral("area"), QStringLiteral("address"), QStringLiteral("value")});
    std::vector<ValueLine> lines;
    LineErrors errors;
    LineTaker taker(table, layout);
    for (const CsvTable::Row& row : table.rows) {
        try {
            if (auto line = taker.take(row))
                lines.push_back(std::move(*line));
        } catch (const Refusal& refusal) {
            errors.add(table.at(row) + refusal.message());
        }
    }
    errors.refuseIfAny();
    return lines;
}
