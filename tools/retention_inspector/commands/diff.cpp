// Comparison of kept values, cell by cell.
// SPDX-License-Identifier: MIT
#include "tools/retention_inspector/difference.h"

namespace {

Value cellValue(const AreaValues& values, std::size_t cell)
{
    return values.hasValue(cell) ? numberValue(qint64(values.values[cell]))
                                 : Value{QJsonValue(), QStringLiteral("-")};
}

} // namespace

Report differenceReport(const Layout& layout, const RetentionFiles& first, const RetentionFiles& second)
{
    Table table{QStringLiteral("differences"),
                QStringLiteral("difference"),
                QStringLiteral("Different cells (\"-\" for no value)"),
                {{"area", "Area"}, {"address", "Address"}, {"first", "First"}, {"second", "Second"}},
                {}};
    qint64 compared = 0;
    for (std::size_t i = 0; i < first.size(); ++i) {
        const AreaValues left = areaValues(layout, first[i]);
        const AreaValues right = areaValues(layout, second[i]);
        const CellRanges& kept = layout.areas[i].kept;
        compared += kept.count();
        for (const CellRange& range : kept) {
            for (qint64 at = range.first; at <= range.last; ++at) {
                const auto cell = static_cast<std::size_t>(at);
                if (left.values[cell] != right.values[cell] || left.hasValue(cell) != right.hasValue(cell))
                    table.rows.push_back({textValue(left.area->name), numberValue(at), cellValue(left, cell),
                                          cellValue(right, cell)});
            }
        }
    }
    Report report;
    report.command = QStringLiteral("diff");
    report.differs = !table.rows.empty();
    report.facts = {
        {QStringLiteral("compared"), QStringLiteral("Compared cells"), numberValue(compared)},
        {QStringLiteral("different"), QStringLiteral("Different"), numberValue(qint64(table.rows.size()))}};
    report.tables.push_back(std::move(table));
    return report;
}
