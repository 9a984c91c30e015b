// power_cut_disk_states: starts the module on the disk states that a cut could leave and checks what it
// restores.
// SPDX-License-Identifier: MIT
#include "tests/power_cut/disk_states/history.h"

#include "simulated_host/shell.h"

#include <iostream>

int main(int argc, char** argv)
{
    QCoreApplication::setApplicationName(QStringLiteral("power_cut_disk_states"));
    const Options options = [&] {
        const QCoreApplication application(argc, argv);
        return readOptions(
            application, QStringLiteral("states"), 100000,
            QStringLiteral("Records what the module does to the disk, builds the disk states that a "
                           "power cut could leave, and starts the module on each of them."));
    }();
    const ModuleLibrary library = loadPrivately(options.module);
    setCommandRunner({});

    Evidence evidence(options.evidence);
    StateCounts totals;
    quint64 number = 0;
    {
        Progress progress(options.total, QStringLiteral("states"));
        for (; totals.counts.units < options.total; ++number) {
            History(library, options.seed, number, evidence, totals).run(options.total);
            progress.show(totals.counts.units);
        }
    }
    std::cout << "seed " << options.seed << ": " << number << " panels, " << totals.cutPoints
              << " cut points, of " << totals.exhausted << " every state\n";
    return printCounts(totals.counts, QStringLiteral("states"));
}
