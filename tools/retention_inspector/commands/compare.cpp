// Compares the files of many panels of one project with what most of them have.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/panel_comparison.h"
#include "tools/retention_inspector/command.h"
#include "tools/retention_inspector/report/named_values.h"
#include "tools/retention_inspector/report/progress.h"

#include <algorithm>
#include <utility>

namespace {

QString cellsText(const ComparedPanel& panel)
{
    QStringList texts;
    for (std::size_t i = 0; i < areaCount; ++i)
        if (!panel.different[i].empty())
            texts.append(QString::fromLatin1(areaFacts[i].name) + QLatin1Char(' ') +
                         CellRanges(panel.different[i]).text());
    const QString text = texts.join(QLatin1String("; "));
    const int most = 60;
    return text.size() <= most ? text : text.left(most - 4) + QLatin1String(" ...");
}

Table panelTable(const std::vector<ComparedPanel>& panels)
{
    Table table{"panels",
                "panel",
                "Panels",
                {{"panel", "Panel"},
                 {"fits", "Fits"},
                 {"findings", "Findings"},
                 {"different", "Different"},
                 {nullptr, "Cells that differ from most panels"},
                 {"lb"},
                 {"lw"},
                 {"rwi"}}};
    for (const ComparedPanel& panel : panels)
        table.rows.push_back({panel.directory, panel.findings == 0 ? "yes" : "no", qint64(panel.findings),
                              panel.cells, cellsText(panel), CellRanges(panel.different[0]),
                              CellRanges(panel.different[1]), CellRanges(panel.different[2])});
    return table;
}

/// The name of the cell's tag; empty for none.
QString nameOf(const Tags* tags, const AreaFacts& area, qint64 cell)
{
    const Tag* const tag = tags ? tags->of(area, cell) : nullptr;
    return tag ? tag->name : QString();
}

/// For people: one row for each cell in which some panel differs.
Table cellTable(const PanelComparison& comparison, const Tags* tags)
{
    Table table{"cells",
                "cell",
                "Cells that differ (\"Most\" is the value of more than half of the panels)",
                {{"area", "Area"},
                 {"address", "Address"},
                 {"name", tags ? "Name" : nullptr},
                 {"most", "Most"},
                 {"panels", "Panels that differ"},
                 {"values", "Their values"}}};
    const std::size_t mostValues = 5;
    for (const AreaFacts& area : areaFacts) {
        std::vector<Deviation> sorted = comparison.deviations[static_cast<std::size_t>(&area - areaFacts)];
        std::stable_sort(sorted.begin(), sorted.end(),
                         [](const Deviation& a, const Deviation& b) { return a.cell < b.cell; });
        for (std::size_t next = 0; next < sorted.size();) {
            const Deviation& first = sorted[next];
            qint64 panels = 0;
            std::vector<int> values;
            for (; next < sorted.size() && sorted[next].cell == first.cell; ++next, ++panels)
                if (values.size() <= mostValues &&
                    std::find(values.begin(), values.end(), sorted[next].value) == values.end())
                    values.push_back(sorted[next].value);
            const bool more = values.size() > mostValues;
            if (more)
                values.pop_back();
            Value texts(values);
            if (more)
                texts.text += QLatin1String(", ...");
            table.rows.push_back(
                {area.name, first.cell, nameOf(tags, area, first.cell), int(first.most), panels, texts});
        }
    }
    return table;
}

/// For scripts: every difference.
Table differenceTable(const PanelComparison& comparison, const Tags* tags)
{
    Table table{
        "differences", "difference", nullptr, {{"panel"}, {"area"}, {"address"}, {"name"}, {"value"}}};
    for (const AreaFacts& area : areaFacts)
        for (const Deviation& one : comparison.deviations[static_cast<std::size_t>(&area - areaFacts)])
            table.rows.push_back({comparison.panels[one.panel].directory, area.name, one.cell,
                                  nameOf(tags, area, one.cell), int(one.value)});
    return table;
}

Report run(const Inputs& inputs)
{
    const Layout& layout = inputs.layout();
    const std::optional<Tags> tags = tagsOf(inputs);
    Report report;
    report.facts.push_back({"mode", "Mode", layout.settings.mode});
    if (tags)
        addTagRemarks(layout, *tags, report);
    Progress progress(3 * static_cast<std::size_t>(inputs.paths.size()), "comparing panels");
    const PanelComparison comparison = comparePanels(layout, inputs.paths, [&progress] { progress.step(); });
    report.findings.insert(report.findings.end(), comparison.findings.begin(), comparison.findings.end());
    const std::vector<ComparedPanel>& panels = comparison.panels;
    const auto count = [&](auto is) { return qint64(std::count_if(panels.begin(), panels.end(), is)); };
    report.facts.push_back({"compared", "Panels", qint64(panels.size())});
    report.facts.push_back(
        {"fitting", "Fit", count([](const ComparedPanel& panel) { return panel.findings == 0; })});
    report.facts.push_back(
        {"deviating", "Differ", count([](const ComparedPanel& panel) { return panel.cells > 0; })});
    report.facts.push_back({"undecided", "Cells without a majority", comparison.undecided});
    report.differs =
        comparison.betweenTwo > 0 || count([](const ComparedPanel& panel) { return panel.cells > 0; }) > 0;
    const Tags* const names = tags ? &*tags : nullptr;
    report.tables = {panelTable(panels), cellTable(comparison, names), differenceTable(comparison, names)};
    report.findingsFirst = true;
    if (const qint64 cells = comparison.betweenTwo)
        report.notes.append(
            QStringLiteral("%1 %2 between two panels, of which neither is the majority; "
                           "\"diff\" with their two directories lists the differences.")
                .arg(countText(cells, "cell"), QLatin1String(cells == 1 ? "differs" : "differ")));
    if (comparison.undecided > comparison.betweenTwo)
        report.notes.append(QStringLiteral("Cells for which no value is shared by more than half of the "
                                           "panels, such as counters, do not count as differences."));
    return report;
}

} // namespace

extern const Command compareCommand = {
    "compare",
    {{"PROJECT.xml", Argument::Kind::Project}, {"DIR", Argument::Kind::Path, Argument::Count::AtLeastOne}},
    "many panels: whether their files fit, and which cells differ from most panels",
    "Checks the files of every directory against the project and compares the values of those that fit, "
    "cell\n"
    "by cell, with the value that more than half of the panels have. One line per panel. The exit status is "
    "1\n"
    "if files do not fit or values differ. Two panels have no majority: only the number\n"
    "of differing cells is given. \"diff\" lists them, and compares two states of one panel.",
    "project.xml backups/*\nproject.xml backups/* --tags tags.csv --format csv",
    {{"tags", "TAGS.csv", "Names of the cells"}},
    run};
