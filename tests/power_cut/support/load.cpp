// Random changes and saves.
// SPDX-License-Identifier: MIT
#include "tests/power_cut/support/load.h"

#include "simulated_host/shell.h"

#include <algorithm>
#include <cstring>

namespace {

ushort randomValue(Random& random, int area)
{
    if (area == 0)
        return static_cast<ushort>(random.below(2));
    static const std::vector<ushort> corners = {0, 1, 0x00ff, 0xff00, 0x8000, 0xffff};
    return random.oneIn(4) ? random.oneOf(corners) : static_cast<ushort>(random.below(0x10000));
}

} // namespace

Load::Load(Panel& panel, const PanelProject& project, Random& random, LoadLog& log)
    : panel(panel), project(project), random(random), log(log)
{
    setCommandRunner([this](const char* command) { return runCommand(command); });
}

Load::~Load()
{
    setCommandRunner({});
}

void Load::step()
{
    if (project.wholeAreas())
        changeAreas();
    else
        changeRange();
}

int Load::runCommand(const char* command)
{
    if (std::strcmp(command, "sync") != 0)
        qFatal("the module ran '%s'", command);
    log.sync();
    finishCurrent();
    return 0;
}

void Load::finishCurrent()
{
    if (reporting)
        log.keep(*reporting);
    if (saving)
        log.completeSave();
    reporting = nullptr;
    saving = false;
}

void Load::changeRange()
{
    const CellRange& range = random.oneOf(project.ranges);
    const int first = random.below(range.count);
    const int count = random.oneIn(3) ? std::min(random.between(2, 5), range.count - first) : 1;
    std::vector<Change> changes;
    for (int j = 0; j < count; ++j)
        changes.push_back({{range.area, range.first + first + j}, randomValue(random, range.area)});

    MemoryArea& area = panel.areas.all()[static_cast<std::size_t>(range.area)];
    for (const Change& change : changes) {
        log.give(change);
        area.setCell(change.cell.address, change.value);
    }
    for (const Change& change : changes) {
        reporting = &change;
        panel.reportChange(area.name(), change.cell.address);
        finishCurrent(); // a report that returned counts, whether it ran "sync" or not
    }
}

void Load::changeAreas()
{
    for (int left = random.between(1, 6); left > 0; --left) {
        const int area = random.below(3);
        // Now and then a long run of cells, so that many sectors differ.
        const int count = random.oneIn(8) ? random.between(1000, 20000) : random.between(1, 3);
        const int first = random.below(MemoryArea::cellCount - count);
        for (int j = 0; j < count; ++j)
            panel.areas.all()[static_cast<std::size_t>(area)].setCell(first + j, randomValue(random, area));
    }
    log.beginSave(panel.areas);
    saving = true;
    panel.advance(panel.model->cyclePeriodMs);
    finishCurrent();
}
