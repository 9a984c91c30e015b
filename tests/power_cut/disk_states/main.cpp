// power_cut_disk_states: starts the module on the disk states that a cut could leave and checks what it
// restores.
// SPDX-License-Identifier: MIT
#include "tests/power_cut/disk_states/history.h"

#include "simulated_host/shell.h"

#include <iostream>

namespace {

void print(const Totals& totals, quint64 seed)
{
    std::cout << "seed " << seed << ": " << totals.panels << " panels with " << totals.retainedCells
              << " retained cells, " << totals.cutPoints << " cut points, of " << totals.exhausted
              << " every state\n"
              << "longest lives: " << totals.mostChanges << " changes, " << totals.mostSaves << " saves\n";
    for (std::size_t i = 0; i < totals.kinds.size(); ++i)
        std::cout << "  " << projectKindNames[i] << ": " << totals.kinds[i].states << " states, "
                  << totals.kinds[i].atStake << " values at stake\n";
    std::cout << "pages of 4 KiB spoiled around each write (not promised): " << totals.spoiled.states
              << " states, " << totals.spoiledLost << " of " << totals.spoiled.atStake << " values lost\n";
}

} // namespace

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

    Findings findings(options.evidence);
    Totals totals;
    {
        Progress progress(options.total, QStringLiteral("states"));
        totals = runHistories(library, {options.total, options.seed}, findings,
                              [&](qint64 done) { progress.show(done); });
    }
    print(totals, options.seed);
    qint64 atStake = 0;
    for (const Totals::OfKind& kind : totals.kinds)
        atStake += kind.atStake;
    std::cout << totals.states() << " states, " << totals.kept << " changes kept, " << atStake
              << " values at stake, " << totals.compared << " values compared, " << findings.lost()
              << " values lost" << std::endl;
    return findings.lost() == 0 ? 0 : 1;
}
