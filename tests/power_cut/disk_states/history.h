// Runs lives of panels, and starts the module on the disk states that a cut at each instant could leave.
// SPDX-License-Identifier: MIT
#pragma once

#include "tests/power_cut/disk_states/findings.h"
#include "tests/power_cut/disk_states/life.h"
#include "tests/power_cut/disk_states/panel_project.h"

#include <unordered_set>

struct Totals
{
    struct OfKind
    {
        qint64 states = 0;
        qint64 atStake = 0; ///< values that were changed and kept in the life that led to the state, summed
    };
    std::array<OfKind, projectKinds> kinds;
    quint64 panels = 0;
    qint64 retainedCells = 0;
    qint64 cutPoints = 0;
    qint64 exhausted = 0; ///< cut points at which all states were started
    qint64 kept = 0;      ///< changes and saves from which the module returned
    int mostChanges = 0;  ///< in one life
    int mostSaves = 0;    ///< in one life
    qint64 compared = 0;  ///< values
    OfKind spoiled;       ///< states with spoiled pages; values that were compared there
    qint64 spoiledLost = 0;

    qint64 states() const;
};

struct RunPlan
{
    qint64 states = 0;
    quint64 seed = 1;          ///< determines everything
    bool stopWhenLost = false; ///< starts nothing more after something was lost
    int changesOfLongLife = 70001;
    int savesOfLongLife = 301;
};

/// Runs panels of all kinds, the first two with long lives, until enough states were started.
Totals runHistories(const ModuleLibrary& library, const RunPlan& plan, Findings& findings,
                    const std::function<void(qint64)>& progress);

/// One panel. The caller owns `library`, `findings` and `totals`.
class History
{
public:
    struct Kind
    {
        ProjectKind project;
        bool longLife;
        qint64 mostStates; ///< of this kind, in all histories
    };

    /// `number` selects the random numbers; with the seed and `kind` it determines everything.
    History(const ModuleLibrary& library, const RunPlan& plan, quint64 number, Kind kind, Findings& findings,
            Totals& totals);

    /// Runs a few lives. The first begins without a project directory or on random files, each further one on
    /// a random state of the life before.
    void run();

private:
    bool isFull() const;
    void live();
    LifePlan planOfLife();
    void cutHere(const LifeState& state, std::size_t eventsDone);
    void startOn(const LifeState& state, const DiskImage& image, std::size_t eventsDone, bool spoiled);
    void report(const QString& when, const QStringList& lost, const Files& files, std::size_t eventsDone);

    const ModuleLibrary& library;
    const RunPlan& plan;
    const quint64 number;
    const Kind kind;
    RandomSource random;
    const PanelProject project;
    const RetainedCells& cells;
    Findings& findings;
    Totals& totals;
    Totals::OfKind& ofKind;

    int lives = 0;
    std::optional<RecordedLife> life;
    DiskImage nextStart; ///< a state that was started
    qint64 statesOfLife = 0;
    std::unordered_set<std::size_t> checked; ///< states that need no further check under the present promise
};
