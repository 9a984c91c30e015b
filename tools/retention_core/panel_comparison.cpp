// Finds the value of the majority in two passes over the panels, and those that deviate in a third.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/panel_comparison.h"

#include "tools/retention_core/refusal.h"

#include <algorithm>

namespace {

/// The values of one area in all panels. The first pass finds the only candidate for a majority, the second
/// counts its votes.
struct AreaVote
{
    const AreaLayout* layout;
    std::vector<ushort> candidate; ///< by place among the kept cells, as are the next two
    std::vector<int> lead;
    std::vector<int> votes;
    int panels = 0; ///< that vote: those whose files fit

    bool hasMajority(std::size_t place) const { return 2 * votes[place] > panels; }
};

using Votes = std::array<AreaVote, areaCount>;

Votes noVotes(const Layout& layout)
{
    Votes votes;
    for (std::size_t i = 0; i < areaCount; ++i) {
        const auto kept = static_cast<std::size_t>(layout.areas[i].kept.count());
        votes[i] = {&layout.areas[i], std::vector<ushort>(kept), std::vector<int>(kept),
                    std::vector<int>(kept)};
    }
    return votes;
}

/// Passes the place, address and value of each kept cell.
template <typename Take> void forEachKept(const AreaLayout& layout, const AreaValues& values, Take take)
{
    std::size_t place = 0;
    for (const CellRange& range : layout.kept)
        for (qint64 cell = range.first; cell <= range.last; ++cell)
            take(place++, cell, values.values[static_cast<std::size_t>(cell)]);
}

/// First pass: do the files fit, and which values lead?
void check(const Layout& layout, ComparedPanel& panel, Votes& votes, std::vector<Finding>& findings)
{
    const std::size_t before = findings.size();
    try {
        const RetentionFiles files = openRetentionFiles(panel.directory);
        for (std::size_t i = 0; i < areaCount; ++i) {
            const AreaReading reading = readArea(layout, files[i]);
            findings.insert(findings.end(), reading.findings.begin(), reading.findings.end());
            panel.fits[i] = !reading.doubtful();
            if (!panel.fits[i])
                continue;
            AreaVote& area = votes[i];
            ++area.panels;
            forEachKept(*area.layout, reading.values, [&area](std::size_t place, qint64, ushort value) {
                if (area.lead[place] == 0)
                    area.candidate[place] = value;
                area.lead[place] += area.candidate[place] == value ? 1 : -1;
            });
        }
    } catch (const Refusal&) {
        findings.push_back({Finding::Severity::Error, "no-directory", panel.directory,
                            QStringLiteral("the directory does not exist or cannot be read."),
                            QStringLiteral("Name the directory with the panel's files.")});
    }
    panel.findings = findings.size() - before;
}

/// The other passes: each kept cell of the files that fit, with the number of its area.
template <typename Take> void forEachFitting(const Layout& layout, const ComparedPanel& panel, Take take)
{
    if (std::find(panel.fits.begin(), panel.fits.end(), true) == panel.fits.end())
        return;
    const RetentionFiles files = openRetentionFiles(panel.directory);
    for (std::size_t i = 0; i < areaCount; ++i)
        if (panel.fits[i])
            forEachKept(layout.areas[i], areaValues(layout, files[i]),
                        [&](std::size_t place, qint64 cell, ushort value) { take(i, place, cell, value); });
}

} // namespace

PanelComparison comparePanels(const Layout& layout, const QStringList& directories,
                              const std::function<void()>& step)
{
    PanelComparison result;
    Votes votes = noVotes(layout);
    for (const QString& directory : directories) {
        result.panels.push_back({directory});
        check(layout, result.panels.back(), votes, result.findings);
        step();
    }
    for (const ComparedPanel& panel : result.panels) {
        forEachFitting(layout, panel, [&](std::size_t area, std::size_t place, qint64, ushort value) {
            votes[area].votes[place] += votes[area].candidate[place] == value;
        });
        step();
    }
    for (std::size_t i = 0; i < result.panels.size(); ++i, step()) {
        ComparedPanel& panel = result.panels[i];
        forEachFitting(layout, panel, [&](std::size_t area, std::size_t place, qint64 cell, ushort value) {
            const ushort most = votes[area].candidate[place];
            if (value == most || !votes[area].hasMajority(place))
                return;
            result.deviations[area].push_back({i, cell, value, most});
            panel.different[area].push_back({cell, cell});
            ++panel.cells;
        });
    }
    for (const AreaVote& area : votes)
        for (std::size_t place = 0; place < area.votes.size(); ++place) {
            const bool open = area.panels > 0 && !area.hasMajority(place);
            result.undecided += open;
            result.betweenTwo += open && area.panels == 2;
        }
    return result;
}
