// power_cut_processes: kills simulated panels at random instants and checks what the next start restores.
// SPDX-License-Identifier: MIT
#include "tests/power_cut/process_cuts/panel_series.h"

#include <iostream>
#include <sys/mman.h>

namespace {

const int cutsOfOnePanel = 50;

SharedLog& newSharedLog()
{
    void* const memory =
        mmap(nullptr, sizeof(SharedLog), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        giveUp(QStringLiteral("no shared memory"));
    return *new (memory) SharedLog();
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication::setApplicationName(QStringLiteral("power_cut_processes"));
    const Options options = [&] {
        const QCoreApplication application(argc, argv);
        return readOptions(application, QStringLiteral("cuts"), 10000,
                           QStringLiteral("Kills simulated panels at random instants, starts them again and "
                                          "checks every value against the log of what was synced."));
    }();
    const ModuleLibrary library = loadPrivately(options.module);

    SharedLog& log = newSharedLog();
    Evidence evidence(options.evidence);
    CutCounts totals;
    {
        // A first start tells how long one takes here.
        PanelSeries(library, options.seed, 0, log, evidence, totals).finish();
        Progress progress(options.total, QStringLiteral("cuts"));
        for (quint64 number = 0; totals.counts.units < options.total; ++number) {
            PanelSeries panel(library, options.seed, number, log, evidence, totals);
            for (int i = 0; i < cutsOfOnePanel && totals.counts.units < options.total; ++i) {
                panel.cut();
                progress.show(totals.counts.units);
            }
            panel.finish();
        }
    }
    std::cout << "seed " << options.seed << ": " << totals.inStart << " cuts fell into a start-up, "
              << totals.inChange << " into a change or a save\n";
    return printCounts(totals.counts, QStringLiteral("cuts"));
}
