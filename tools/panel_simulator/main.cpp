// Runs panel_simulator: options, start-up, and the loop over commands.
// SPDX-License-Identifier: MIT
#include "project_tree/project_reader.h"
#include "simulated_host/panel.h"
#include "simulated_host/private_directory.h"
#include "tools/panel_simulator/command.h"
#include "tools/panel_simulator/line_source.h"
#include "tools/panel_simulator/live_view.h"
#include "tools/panel_simulator/session.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <iostream>
#include <unistd.h>

namespace {

const int usageStatus = 2;

struct Options
{
    QString project;
    QString module;
    QString directory;
    QString script; ///< empty: commands come from standard input
};

/// That of the build tree or, where there is none, the installed one.
QString moduleBesideTool()
{
    const QDir tool(QCoreApplication::applicationDirPath());
    return tool.filePath(tool.exists(QStringLiteral(MODULE_IN_BUILD_TREE))
                             ? QStringLiteral(MODULE_IN_BUILD_TREE)
                             : QStringLiteral(INSTALLED_MODULE));
}

[[noreturn]] void giveUp(const QString& message)
{
    std::cerr << "panel_simulator: " << message.toStdString() << std::endl;
    std::exit(usageStatus);
}

Options readOptions(QCoreApplication& application)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Runs the retention module against a project, as the panel's runtime would.\n"
                       "The module's fixed directory shows --project-dir, for this process only.\n\n"
                       "Commands, from the terminal, a pipe or a script ('#' begins a comment line):\n") +
        commandHelp());
    // Not addHelpOption(): that also offers --help-all, for Qt's own options, and there are none.
    parser.addOption({{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Shows this help.")});
    parser.addPositionalArgument(QStringLiteral("PROJECT.xml"), QStringLiteral("The panel's project."));
    const QCommandLineOption module(QStringLiteral("module"), QStringLiteral("The module binary."),
                                    QStringLiteral("PATH"), moduleBesideTool());
    const QCommandLineOption directory(
        QStringLiteral("project-dir"),
        QStringLiteral(
            "Where the retention files lie; made when it is missing. Without it: PROJECT.retention, here."),
        QStringLiteral("DIR"));
    const QCommandLineOption script(QStringLiteral("script"),
                                    QStringLiteral("Commands to run; the first bad one ends with status 2."),
                                    QStringLiteral("FILE"));
    parser.addOptions({module, directory, script});
    if (!parser.parse(application.arguments()))
        giveUp(parser.errorText() + QStringLiteral(" (see --help)"));
    if (parser.isSet(QStringLiteral("help")))
        parser.showHelp();
    if (parser.positionalArguments().size() != 1)
        giveUp(
            QStringLiteral("expected one project file: panel_simulator PROJECT.xml [options] (see --help)"));

    const QString project = parser.positionalArguments().constFirst();
    return {project, parser.value(module),
            parser.isSet(directory) ? parser.value(directory)
                                    : QFileInfo(project).completeBaseName() + QLatin1String(".retention"),
            parser.value(script)};
}

void toggle(LiveView& view)
{
    if (view.isShown())
        view.hide();
    else if (!view.show())
        std::cerr << "live: expected a terminal of at least 12 lines" << std::endl;
}

int runCommands(int descriptor, const Options& options, Panel& panel)
{
    LiveView view(panel);
    LineSource lines(descriptor, panel, view);
    QString line;
    for (int lineNumber = 1;; ++lineNumber) {
        if (!lines.next(line))
            return 0;
        const Command command = parseCommand(line);
        if (!command.error.isEmpty()) {
            const std::string message = command.error.toStdString();
            if (!options.script.isEmpty()) {
                std::cerr << options.script.toStdString() << ':' << lineNumber << ": " << message
                          << std::endl;
                return usageStatus;
            }
            std::cerr << message << std::endl;
            continue;
        }
        if (command.kind == Command::Kind::Live) {
            toggle(view);
            continue;
        }
        if (command.kind == Command::Kind::PowerCut)
            view.hide(); // while there is time to
        const bool goOn = runCommand(command, panel, options.directory, std::cout);
        std::cout.flush();
        if (!goOn)
            return 0;
    }
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const Options options = readOptions(application);

    const ProjectReading reading = readProjectFile(options.project);
    if (!reading.project)
        giveUp(reading.error);
    QFile input;
    if (options.script.isEmpty()) {
        input.open(STDIN_FILENO, QIODevice::ReadOnly);
    } else {
        input.setFileName(options.script);
        if (!input.open(QIODevice::ReadOnly))
            giveUp(QStringLiteral("%1: cannot be read: %2").arg(options.script, input.errorString()));
    }
    if (!QDir().mkpath(options.directory))
        giveUp(QStringLiteral("%1: cannot be made a directory; name another one with --project-dir")
                   .arg(options.directory));
    const QString directory = QFileInfo(options.directory).canonicalFilePath();
    const QString module = QFileInfo(options.module).absoluteFilePath();

    QString error = enterPrivateUsr();
    if (error.isEmpty())
        error = mapProjectDirectory(directory);
    if (!error.isEmpty())
        giveUp(error);
    if (!pathMappingNotice().isEmpty())
        std::cerr << "panel_simulator: " << pathMappingNotice().toStdString() << std::endl;
    const ModuleLibrary library(module);
    if (!library.isLoaded())
        giveUp(library.error());

    Panel panel(library, reading.project.get());
    panel.start();
    std::cout << "started: " << modeText(*panel.model).toStdString() << std::endl;
    if (panel.model->retentionMode == 1 && panel.model->cyclePeriodMs <= 0)
        std::cout << "no cyclic calls: the period is " << panel.model->cyclePeriodMs << " ms" << std::endl;
    const int status = runCommands(input.handle(), options, panel);
    std::cout << "stopped" << std::endl;
    return status;
}
