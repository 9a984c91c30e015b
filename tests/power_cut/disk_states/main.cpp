// Runs power_cut_disk_states: starts the module on the disk states that a cut could leave, and checks what it
// restores.
// SPDX-License-Identifier: MIT
#include "tests/power_cut/disk_states/history.h"

#include "simulated_host/private_directory.h"
#include "simulated_host/shell.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QElapsedTimer>

#include <iostream>
#include <unistd.h>

namespace {

struct Options
{
    RunPlan plan;
    QString evidence;
};

Options readOptions(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Records what the module does to the disk, builds the disk states that a power cut "
                       "could leave, and starts the module on each of them."));
    parser.addHelpOption();
    const char* const options[][4] = {{"states", "How many states to make at least.", "N", "100000"},
                                      {"seed", "Where the random numbers begin.", "S", "1"},
                                      {"evidence",
                                       "Folder for what belongs to a failure: project, files and a report.",
                                       "DIR", "build/power_cut"}};
    for (const auto& each : options)
        parser.addOption({QLatin1String(each[0]), QLatin1String(each[1]), QLatin1String(each[2]),
                          QString::fromLocal8Bit(each[3])});
    if (!parser.parse(application.arguments()))
        giveUp(parser.errorText() + QStringLiteral(" (see --help)"));
    if (parser.isSet(QStringLiteral("help")))
        parser.showHelp(0);
    if (!parser.positionalArguments().isEmpty())
        giveUp(
            QStringLiteral("'%1' is not an option (see --help)").arg(parser.positionalArguments().first()));
    const auto number = [&](const QString& name, qlonglong least) {
        bool isNumber = false;
        const qlonglong given = parser.value(name).toLongLong(&isNumber);
        if (!isNumber || given < least)
            giveUp(QStringLiteral("--%1 %2: give a number of %3 or more")
                       .arg(name, parser.value(name), QString::number(least)));
        return given;
    };
    RunPlan plan;
    plan.states = number(QStringLiteral("states"), 1);
    plan.seed = static_cast<quint64>(number(QStringLiteral("seed"), 0));
    return {plan, parser.value(QStringLiteral("evidence"))};
}

/// Shows the progress of the run on a terminal.
void showProgress(qint64 done, qint64 states)
{
    static QElapsedTimer sinceLast;
    if (!isatty(STDERR_FILENO) || (sinceLast.isValid() && sinceLast.elapsed() < 200 && done < states))
        return;
    sinceLast.restart();
    std::cerr << "\r\033[K";
    if (done < states)
        std::cerr << done << " of " << states << " states" << std::flush;
}

void print(const Totals& totals, quint64 seed, qint64 lost)
{
    std::cout << "seed " << seed << ": " << totals.panels << " panels with " << totals.retainedCells
              << " retained cells, " << totals.cutPoints << " cut points, of " << totals.exhausted
              << " every state\n"
              << "longest lives: " << totals.mostChanges << " changes, " << totals.mostSaves << " saves\n";
    qint64 atStake = 0;
    for (std::size_t i = 0; i < totals.kinds.size(); ++i) {
        atStake += totals.kinds[i].atStake;
        std::cout << "  " << projectKindNames[i] << ": " << totals.kinds[i].states << " states, "
                  << totals.kinds[i].atStake << " values at stake\n";
    }
    std::cout << "pages of 4 KiB spoiled around each write (not promised): " << totals.spoiled.states
              << " states, " << totals.spoiledLost << " of " << totals.spoiled.atStake << " values lost\n"
              << totals.states() << " states, " << totals.kept << " changes kept, " << atStake
              << " values at stake, " << totals.compared << " values compared, " << lost << " values lost"
              << std::endl;
}

} // namespace

int main(int argc, char** argv)
{
    const Options options = readOptions(argc, argv);
    const QString error = enterPrivateUsr();
    if (!error.isEmpty())
        giveUp(error);
    if (!pathMappingNotice().isEmpty())
        std::cerr << qPrintable(pathMappingNotice()) << std::endl;
    const ModuleLibrary library(QStringLiteral(MODULE_PATH));
    if (!library.isLoaded())
        giveUp(library.error());
    setCommandRunner({});

    Findings findings(options.evidence);
    const Totals totals = runHistories(library, options.plan, findings,
                                       [&](qint64 done) { showProgress(done, options.plan.states); });
    print(totals, options.plan.seed, findings.lost());
    return findings.lost() == 0 ? 0 : 1;
}
