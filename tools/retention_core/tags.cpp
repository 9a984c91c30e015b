// Checks tags one by one and against each other, and places them in the files.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/tags.h"

#include "tools/numbers.h"
#include "tools/retention_core/csv_table.h"
#include "tools/retention_core/kept_values.h"
#include "tools/retention_core/refusal.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace {

const qint64 sectorBytes = 512; // the smallest unit that any disk or flash writes at once
const int mostMessages = 20;

bool isBefore(const Tag& a, const Tag& b)
{
    return std::tuple(a.area, a.first) < std::tuple(b.area, b.first);
}

Tag readTag(const CsvTable& table, const CsvTable::Row& row)
{
    Tag tag;
    tag.line = row.line;
    tag.area = &areaOf(table.field(row, "area").trimmed());
    tag.first = addressOf(table.field(row, "address"));
    tag.type = valueTypeOf(table.field(row, "type"));
    tag.name = plainText(table.field(row, "name").trimmed());
    tag.unit = plainText(table.field(row, "unit").trimmed());
    if (tag.name.isEmpty())
        throw Refusal(QStringLiteral("the tag has no name; add one"));
    if (tag.area->bits != tag.type.isBit())
        throw Refusal(
            QStringLiteral("the type %1 does not fit %2, whose cells are %3; change the type or the area")
                .arg(tag.type.text(), QLatin1String(tag.area->name),
                     QLatin1String(tag.area->bits ? "bits" : "words")));
    if (tag.cells().last >= cellCount(*tag.area))
        throw Refusal(QStringLiteral("%1 at address %2 extends beyond the end of the area, %3")
                          .arg(tag.type.text())
                          .arg(tag.first)
                          .arg(cellCount(*tag.area) - 1));
    return tag;
}

QString placeText(const Tags& tags, const Tag& tag)
{
    return QStringLiteral("%1:%2: \"%3\", %4 %5")
        .arg(tags.fileName)
        .arg(tag.line)
        .arg(tag.name, QLatin1String(tag.area->name), rangeText(tag.cells()));
}

Finding finding(const Tags& tags, const Tag& tag, Finding::Severity severity, const char* kind,
                const QString& problem, const QString& remedy)
{
    return {severity,
            kind,
            placeText(tags, tag),
            problem,
            remedy,
            QLatin1String(tag.area->name),
            CellRanges({tag.cells()})};
}

const LayoutBlock* blockWith(const AreaLayout& area, qint64 cell)
{
    const auto after =
        std::upper_bound(area.blocks.begin(), area.blocks.end(), cell,
                         [](qint64 at, const LayoutBlock& block) { return at < block.first(); });
    for (auto block = after; block != area.blocks.begin();)
        if ((--block)->info.count > 0)
            return block->last() >= cell ? &*block : nullptr;
    return nullptr;
}

} // namespace

const AreaFacts& areaOf(const QString& text)
{
    if (const AreaFacts* const area = areaNamed(text))
        return *area;
    throw Refusal(QStringLiteral("area \"%1\": expected LB, LW or RWI").arg(text));
}

int addressOf(const QString& text)
{
    if (const std::optional<qint64> address = wholeNumber(text.trimmed(), 0, 65535))
        return static_cast<int>(*address);
    throw Refusal(QStringLiteral("address \"%1\": expected a number from 0 to 65535").arg(text.trimmed()));
}

void LineErrors::refuseIfAny() const
{
    if (messages.isEmpty())
        return;
    QStringList shown = messages.mid(0, mostMessages);
    if (messages.size() > mostMessages)
        shown.append(QStringLiteral("and %1 more lines like these").arg(messages.size() - mostMessages));
    throw Refusal(shown.join(QLatin1Char('\n')));
}

const Tag* Tags::of(const AreaFacts& area, qint64 cell) const
{
    Tag wanted;
    wanted.area = &area;
    wanted.first = static_cast<int>(cell);
    const auto after = std::upper_bound(tags.begin(), tags.end(), wanted, isBefore);
    if (after == tags.begin())
        return nullptr;
    const Tag& tag = *(after - 1);
    return tag.area == &area && tag.cells().last >= cell ? &tag : nullptr;
}

Tags readTags(const QString& path)
{
    const CsvTable table = readCsvTable(path, {QStringLiteral("area"), QStringLiteral("address"),
                                               QStringLiteral("type"), QStringLiteral("name")});
    Tags tags;
    tags.fileName = table.fileName;
    LineErrors errors;
    for (const CsvTable::Row& row : table.rows) {
        try {
            tags.tags.push_back(readTag(table, row));
        } catch (const Refusal& refusal) {
            errors.add(table.at(row) + refusal.message());
        }
    }
    std::stable_sort(tags.tags.begin(), tags.tags.end(), isBefore);
    const Tag* before = nullptr; // the one that ends last
    for (const Tag& tag : tags.tags) {
        const bool shared = before && before->area == tag.area && before->cells().last >= tag.first;
        if (shared)
            errors.add(QStringLiteral(
                           "%1:%2: %3 %4 already belongs to \"%5\" of line %6; correct one of the two, or "
                           "remove it")
                           .arg(tags.fileName)
                           .arg(tag.line)
                           .arg(QLatin1String(tag.area->name))
                           .arg(tag.first)
                           .arg(before->name)
                           .arg(before->line));
        if (!shared || tag.cells().last > before->cells().last)
            before = &tag;
    }
    errors.refuseIfAny();
    return tags;
}

std::vector<Finding> tagFindings(const Layout& layout, const Tags& tags)
{
    std::vector<Finding> findings;
    for (const Tag& tag : tags.tags) {
        const AreaLayout& area = layout.of(*tag.area);
        const CellRanges kept = area.kept.within(tag.cells());
        if (kept.isEmpty() || tag.type.cells() == 1)
            continue;
        if (kept.count() < tag.type.cells()) {
            findings.push_back(finding(
                tags, tag, Finding::Severity::Error, "half-retained",
                QStringLiteral(
                    "only %1 %2 retained, so the next start combines retained values with start values.")
                    .arg(QLatin1String(tag.area->name),
                         kept.text() + QLatin1String(kept.count() == 1 ? " is" : " are")),
                QStringLiteral("Let one entry cover all of %1.").arg(rangeText(tag.cells()))));
            continue;
        }
        const LayoutBlock* const first = blockWith(area, tag.cells().first);
        const LayoutBlock* const last = blockWith(area, tag.cells().last);
        const FilePlace begin = filePlace(area, *first, tag.cells().first);
        const FilePlace end = filePlace(area, *last, tag.cells().last);
        if (first != last)
            findings.push_back(
                finding(tags, tag, Finding::Severity::Warning, "split-over-blocks",
                        QStringLiteral("it spans blocks %1 and %2, which are written one after the other: a "
                                       "power cut between the two writes leaves half of it old.")
                            .arg(first->number)
                            .arg(last->number),
                        QStringLiteral("Let one entry cover all of %1.").arg(rangeText(tag.cells()))));
        else if (begin.byte / sectorBytes != (end.byte + end.bytes - 1) / sectorBytes)
            findings.push_back(finding(
                tags, tag, Finding::Severity::Warning, "crosses-sector",
                QStringLiteral("it spans byte %1 of %2, where a 512-byte sector begins: a power cut may "
                               "leave half of it old.")
                    .arg((begin.byte / sectorBytes + 1) * sectorBytes)
                    .arg(QLatin1String(tag.area->fileName)),
                QString::fromLatin1(area.image ? "Move it by one cell."
                                               : "Move it, or what precedes it in the file, by one cell.")));
    }
    return findings;
}
