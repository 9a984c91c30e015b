// Compares the files of many panels of one project with what most of them have.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/refusal.h"
#include "tools/retention_inspector/command.h"
#include "tools/retention_inspector/report/named_values.h"
#include "tools/retention_inspector/report/progress.h"

#include <algorithm>
#include <utility>

namespace {

/// A cell of one panel with a value different from most panels'.
struct Deviation
{
    std::size_t panel;
    qint64 cell;
    ushort value;
};

/// The values of one area in all panels. Finds the value of the majority without keeping them all: the first
/// pass finds the only candidate, the second counts its votes.
struct AreaVote
{
    const AreaLayout* layout;
    std::vector<ushort> candidate; ///< by place among the kept cells, as are the next two
    std::vector<int> lead;
    std::vector<int> votes;
    int panels = 0; ///< that vote: those whose files fit
    std::vector<Deviation> deviations = {};

    bool hasMajority(std::size_t place) const { return 2 * votes[place] > panels; }
};

struct Panel
{
    QString directory;
    bool opened = false;
    std::array<bool, areaCount> counts = {}; ///< the area's file fits, so its values are compared
    std::size_t findings = 0;
    std::array<std::vector<CellRange>, areaCount> different = {};
    qint64 cells = 0; ///< that differ
};

template <typename Take> void forEachKept(const AreaLayout& layout, Take take)
{
    std::size_t place = 0;
    for (const CellRange& range : layout.kept)
        for (qint64 cell = range.first; cell <= range.last; ++cell)
            take(place++, cell);
}

void vote(const AreaValues& values, AreaVote& area)
{
    ++area.panels;
    forEachKept(*area.layout, [&](std::size_t place, qint64 cell) {
        const ushort value = values.values[static_cast<std::size_t>(cell)];
        if (area.lead[place] == 0)
            area.candidate[place] = value;
        area.lead[place] += area.candidate[place] == value ? 1 : -1;
    });
}

void count(const AreaValues& values, AreaVote& area)
{
    forEachKept(*area.layout, [&](std::size_t place, qint64 cell) {
        area.votes[place] += area.candidate[place] == values.values[static_cast<std::size_t>(cell)];
    });
}

void deviate(const AreaValues& values, std::size_t number, Panel& panel, AreaVote& area)
{
    auto& different = panel.different[static_cast<std::size_t>(area.layout->area - areaFacts)];
    forEachKept(*area.layout, [&](std::size_t place, qint64 cell) {
        const ushort value = values.values[static_cast<std::size_t>(cell)];
        if (value == area.candidate[place] || !area.hasMajority(place))
            return;
        area.deviations.push_back({number, cell, value});
        different.push_back({cell, cell});
        ++panel.cells;
    });
}

/// The values of a panel's areas, one by one, from those files that fit.
template <typename Take>
void forEachFitting(const Layout& layout, const Panel& panel, std::array<AreaVote, areaCount>& areas,
                    Take take)
{
    if (!panel.opened)
        return;
    const RetentionFiles files = openRetentionFiles(panel.directory);
    for (std::size_t i = 0; i < areaCount; ++i)
        if (panel.counts[i])
            take(areaValues(layout, files[i]), areas[i]);
}

/// First pass: do the files fit?
void check(const Layout& layout, Panel& panel, std::array<AreaVote, areaCount>& areas,
           std::vector<Finding>& findings)
{
    const std::size_t before = findings.size();
    try {
        const RetentionFiles files = openRetentionFiles(panel.directory);
        panel.opened = true;
        for (std::size_t i = 0; i < areaCount; ++i) {
            const AreaReading reading = readArea(layout, files[i]);
            panel.counts[i] = !reading.doubtful();
            if (panel.counts[i])
                vote(reading.values, areas[i]);
            findings.insert(findings.end(), reading.findings.begin(), reading.findings.end());
        }
    } catch (const Refusal& refusal) {
        findings.push_back({Finding::Severity::Error, "no-directory", panel.directory,
                            QStringLiteral("the directory does not exist or cannot be read."),
                            QStringLiteral("Name the directory with the panel's files.")});
    }
    panel.findings = findings.size() - before;
}

QString cellsText(const Panel& panel)
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

Table panelTable(const std::vector<Panel>& panels)
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
    for (const Panel& panel : panels)
        table.rows.push_back({panel.directory, panel.findings == 0 ? "yes" : "no", qint64(panel.findings),
                              panel.cells, cellsText(panel), CellRanges(panel.different[0]),
                              CellRanges(panel.different[1]), CellRanges(panel.different[2])});
    return table;
}

/// For people: one row for each cell in which some panel differs.
Table cellTable(const std::array<AreaVote, areaCount>& areas, const Tags* tags)
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
    for (const AreaVote& area : areas) {
        std::vector<Deviation> sorted = area.deviations;
        std::stable_sort(sorted.begin(), sorted.end(),
                         [](const Deviation& a, const Deviation& b) { return a.cell < b.cell; });
        std::size_t next = 0;
        forEachKept(*area.layout, [&](std::size_t place, qint64 cell) {
            qint64 panels = 0;
            std::vector<int> values;
            for (; next < sorted.size() && sorted[next].cell == cell; ++next, ++panels)
                if (values.size() <= mostValues &&
                    std::find(values.begin(), values.end(), sorted[next].value) == values.end())
                    values.push_back(sorted[next].value);
            if (panels == 0)
                return;
            const bool more = values.size() > mostValues;
            if (more)
                values.pop_back();
            Value texts(values);
            if (more)
                texts.text += QLatin1String(", ...");
            const Tag* const tag = tags ? tags->of(*area.layout->area, cell) : nullptr;
            table.rows.push_back({area.layout->area->name, cell, tag ? tag->name : QString(),
                                  int(area.candidate[place]), panels, texts});
        });
    }
    return table;
}

/// For scripts: every difference.
Table differenceTable(const std::vector<Panel>& panels, const std::array<AreaVote, areaCount>& areas,
                      const Tags* tags)
{
    Table table{
        "differences", "difference", nullptr, {{"panel"}, {"area"}, {"address"}, {"name"}, {"value"}}};
    for (const AreaVote& area : areas)
        for (const Deviation& one : area.deviations) {
            const Tag* const tag = tags ? tags->of(*area.layout->area, one.cell) : nullptr;
            table.rows.push_back({panels[one.panel].directory, area.layout->area->name, one.cell,
                                  tag ? tag->name : QString(), int(one.value)});
        }
    return table;
}

Report run(const Inputs& inputs)
{
    const Layout& layout = inputs.layout();
    const std::optional<Tags> tags = tagsOf(inputs);
    std::array<AreaVote, areaCount> areas;
    for (std::size_t i = 0; i < areaCount; ++i) {
        const auto kept = static_cast<std::size_t>(layout.areas[i].kept.count());
        areas[i] = {&layout.areas[i], std::vector<ushort>(kept), std::vector<int>(kept),
                    std::vector<int>(kept)};
    }
    Report report;
    report.facts.push_back({"mode", "Mode", layout.settings.mode});
    if (tags)
        addTagRemarks(layout, *tags, report);
    std::vector<Panel> panels(static_cast<std::size_t>(inputs.paths.size()));
    Progress progress(3 * panels.size(), "comparing panels");
    for (std::size_t i = 0; i < panels.size(); ++i, progress.step()) {
        panels[i].directory = inputs.paths[static_cast<int>(i)];
        check(layout, panels[i], areas, report.findings);
    }
    for (const Panel& panel : panels) {
        forEachFitting(layout, panel, areas, count);
        progress.step();
    }
    for (std::size_t i = 0; i < panels.size(); ++i, progress.step())
        forEachFitting(layout, panels[i], areas, [&](const AreaValues& values, AreaVote& area) {
            deviate(values, i, panels[i], area);
        });

    qint64 undecided = 0;
    qint64 betweenTwo = 0; // of these, in areas that two panels have
    for (const AreaVote& area : areas)
        for (std::size_t place = 0; place < area.votes.size(); ++place) {
            const bool open = area.panels > 0 && !area.hasMajority(place);
            undecided += open;
            betweenTwo += open && area.panels == 2;
        }
    const auto count = [&](auto is) { return qint64(std::count_if(panels.begin(), panels.end(), is)); };
    report.facts.push_back({"compared", "Panels", qint64(panels.size())});
    report.facts.push_back({"fitting", "Fit", count([](const Panel& panel) { return panel.findings == 0; })});
    report.facts.push_back(
        {"deviating", "Differ", count([](const Panel& panel) { return panel.cells > 0; })});
    report.facts.push_back({"undecided", "Cells without a majority", undecided});
    report.differs = betweenTwo > 0 || count([](const Panel& panel) { return panel.cells > 0; }) > 0;
    const Tags* const names = tags ? &*tags : nullptr;
    report.tables = {panelTable(panels), cellTable(areas, names), differenceTable(panels, areas, names)};
    report.findingsFirst = true;
    if (betweenTwo > 0)
        report.notes.append(
            QStringLiteral("%1 %2 between two panels, of which neither is the majority; "
                           "\"diff\" with their two directories lists the differences.")
                .arg(countText(betweenTwo, "cell"), QLatin1String(betweenTwo == 1 ? "differs" : "differ")));
    if (undecided > betweenTwo)
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
    "if files do not fit or values differ. Of two panels neither is the majority: \"diff\" lists their "
    "differences,\n"
    "and those between two states of one panel.",
    "project.xml backups/*\nproject.xml backups/* --tags tags.csv --format csv",
    {{"tags", "TAGS.csv", "Names of the cells"}},
    run};
