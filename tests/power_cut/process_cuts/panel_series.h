// One panel that loses its power again and again.
// SPDX-License-Identifier: MIT
#ifndef TESTS_POWER_CUT_PROCESS_CUTS_PANEL_SERIES_H
#define TESTS_POWER_CUT_PROCESS_CUTS_PANEL_SERIES_H

#include "simulated_host/module_library.h"
#include "tests/power_cut/process_cuts/shared_log.h"
#include "tests/power_cut/support/command.h"

#include <chrono>

/// Where the cuts fell.
struct CutCounts
{
    Counts counts;
    qint64 inStart = 0;  ///< before the start-up was complete
    qint64 inChange = 0; ///< between giving a value, or beginning a save, and the return of its "sync"
    std::chrono::nanoseconds startTime = std::chrono::nanoseconds::max(); ///< of the fastest start so far
};

/// The private project directory is the panel's and emptied when the series begins; `library`, `log`,
/// `evidence` and `totals` stay the caller's.
class PanelSeries
{
public:
    PanelSeries(const ModuleLibrary& library, quint64 seed, quint64 number, SharedLog& log,
                Evidence& evidence, CutCounts& totals);

    /// One start, its work, and SIGKILL at a random instant, measured by `startTime`; then the check of what
    /// the start had restored.
    void cut();
    /// One more start, which is left to finish, and the check of what it restored.
    void finish();

private:
    int startPanel(bool working);
    [[noreturn]] void live(bool working);
    void check(int child, int signal);
    void takeLog();

    const ModuleLibrary& library;
    const quint64 seed;
    const quint64 number;
    Random random; ///< of the project and the instants
    const PanelProject project;
    Promise promise;
    LengthPromise lengths;
    std::map<QString, QByteArray> files; ///< that the next start finds
    SharedLog& log;
    Evidence& evidence;
    CutCounts& totals;
    quint64 starts = 0;
    std::chrono::steady_clock::time_point begin; ///< of the last start
};

#endif
