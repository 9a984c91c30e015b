// Lists the kept values that differ between two directories of files of one project.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/kept_values.h"
#include "tools/retention_inspector/command.h"

namespace {

Value cellValue(const AreaValues& values, std::size_t cell)
{
    return values.hasValue(cell) ? Value(values.values[cell]) : Value(QJsonValue(), QStringLiteral("-"));
}

Report run(const Inputs& inputs)
{
    Table table{"differences",
                "difference",
                "Different cells (\"-\" for no value)",
                {{"area", "Area"}, {"address", "Address"}, {"first", "First"}, {"second", "Second"}}};
    qint64 compared = 0;
    for (std::size_t i = 0; i < areaCount; ++i) {
        const AreaValues left = areaValues(inputs.layout(), inputs.files[0][i]);
        const AreaValues right = areaValues(inputs.layout(), inputs.files[1][i]);
        const CellRanges& kept = inputs.layout().areas[i].kept;
        compared += kept.count();
        for (const CellRange& range : kept) {
            for (qint64 at = range.first; at <= range.last; ++at) {
                const auto cell = static_cast<std::size_t>(at);
                if (left.values[cell] != right.values[cell] || left.hasValue(cell) != right.hasValue(cell))
                    table.rows.push_back(
                        {left.area->name, at, cellValue(left, cell), cellValue(right, cell)});
            }
        }
    }
    Report report;
    report.differs = !table.rows.empty();
    report.findingsFirst = true;
    for (const RetentionFiles& files : inputs.files) {
        const std::vector<Finding> found = findingsOf(checkFiles(inputs.layout(), files));
        report.findings.insert(report.findings.end(), found.begin(), found.end());
    }
    report.facts = {{"compared", "Compared cells", compared},
                    {"different", "Different", qint64(table.rows.size())}};
    report.tables.push_back(std::move(table));
    return report;
}

} // namespace

extern const Command diffCommand = {"diff",
                                    {{"PROJECT.xml", Argument::Kind::Project},
                                     {"DIR1", Argument::Kind::Files},
                                     {"DIR2", Argument::Kind::Files}},
                                    "kept values that differ between two directories",
                                    "Compares the values in the files of two directories by address; first "
                                    "what \"check\" finds about the files.\n"
                                    "Exit status 1 when any value differs, too.",
                                    "project.xml monday friday\nproject.xml monday friday --format csv",
                                    {},
                                    run};
