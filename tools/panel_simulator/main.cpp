// Runs panel_simulator: options, start-up, and the loop over commands.
// SPDX-License-Identifier: MIT
#include "project_tree/project_reader.h"
#include "simulated_host/mount_namespace.h"
#include "simulated_host/private_directory.h"
#include "simulated_host/shell.h"
#include "tools/panel_simulator/command.h"
#include "tools/panel_simulator/line_source.h"
#include "tools/panel_simulator/live_view.h"
#include "tools/panel_simulator/session.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <QtCore/QElapsedTimer>

#include <cerrno>
#include <cstdlib>
#include <iostream>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace {

const int failureStatus = 1;
const int usageStatus = 2;

struct Options
{
    QString project;
    QString module;
    QString directory;
    QString script; ///< empty: commands come from standard input
};

/// The module of the build tree or, if there is none, the installed one.
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
                       "The module's fixed directory /usr/tavrin/project is mapped to --project-dir, for "
                       "this process only.\n"
                       "\n"
                       "Commands, from the terminal, a pipe or a script (# starts a comment):\n") +
        commandHelp() +
        QStringLiteral(
            "\n"
            "Exit status: 0 all as expected, 1 an expectation failed, 2 usage error, refused input or,\n"
            "from a pipe or a script, a bad command, which ends the run."));
    // Not addHelpOption(), which also offers --help-all for Qt's own options, of which there are none.
    parser.addOption({{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Shows this help.")});
    parser.addPositionalArgument(QStringLiteral("PROJECT.xml"), QStringLiteral("The panel's project."));
    const QCommandLineOption module(
        QStringLiteral("module"),
        QStringLiteral("The module library (default: the one built or installed with this tool)."),
        QStringLiteral("PATH"), moduleBesideTool());
    const QCommandLineOption directory(
        QStringLiteral("project-dir"),
        QStringLiteral("Directory of the retention files, created if missing (default: PROJECT.retention in "
                       "the current directory)."),
        QStringLiteral("DIR"));
    const QCommandLineOption script(
        QStringLiteral("script"),
        QStringLiteral("File with commands to run instead of reading standard input."),
        QStringLiteral("FILE"));
    const QCommandLineOption version(QStringLiteral("version"), QStringLiteral("Shows the version."));
    parser.addOptions({module, directory, script, version});
    if (!parser.parse(application.arguments()))
        giveUp(parser.errorText() + QStringLiteral(" (see --help)"));
    if (parser.isSet(QStringLiteral("help")))
        parser.showHelp();
    if (parser.isSet(version)) {
        std::cout << "panel_simulator " SIMULATOR_VERSION << std::endl;
        std::exit(0);
    }
    if (parser.positionalArguments().size() != 1)
        giveUp(
            QStringLiteral("expected one project file: panel_simulator PROJECT.xml [options] (see --help)"));

    const QString project = parser.positionalArguments().first();
    return {project, parser.value(module),
            parser.isSet(directory) ? parser.value(directory)
                                    : QFileInfo(project).completeBaseName() + QLatin1String(".retention"),
            parser.value(script)};
}

/// On a terminal, when a command takes long, shows its progress in one line that disappears again.
class ProgressLine
{
public:
    void begin() { clock.start(); }
    void show(int done, int all)
    {
        if (!isatty(STDERR_FILENO) || clock.elapsed() < nextMs)
            return;
        nextMs = clock.elapsed() + 200;
        const QString line = QStringLiteral("%1 of %2 cells reported").arg(done).arg(all);
        width = line.size();
        std::cerr << '\r' << line.toStdString() << std::flush;
    }
    void end()
    {
        if (width > 0)
            std::cerr << '\r' << std::string(static_cast<std::size_t>(width), ' ') << '\r' << std::flush;
        width = 0;
        nextMs = firstMs;
    }

private:
    static constexpr qint64 firstMs = 500;
    QElapsedTimer clock;
    qint64 nextMs = firstMs;
    int width = 0;
};

/// Carries out lines, and keeps the resulting exit status.
class Lines
{
public:
    Lines(Session& session, QString source) : session(session), source(std::move(source))
    {
        session.progress = [this](int done, int all) { progress.show(done, all); };
    }

    /// Returns false when the panel is to stop: at "stop" and, unless the lines come from a terminal, at the
    /// first bad one.
    bool carryOut(const QString& line, bool terminal, std::ostream& out, std::ostream& errors)
    {
        ++number;
        const QString place = terminal ? QString() : QStringLiteral("%1:%2: ").arg(source).arg(number);
        const Command command = parseCommand(line);
        QString error = command.error;
        if (command.kind == Command::Kind::Live)
            error = QStringLiteral("live needs a terminal");
        if (!error.isEmpty()) {
            errors << (place + error).toStdString() << std::endl;
            if (!terminal)
                status = usageStatus;
            return terminal;
        }
        progress.begin();
        const CommandResult result = session.run(command, out, errors);
        progress.end();
        out.flush();
        if (!result.failure.isEmpty()) {
            errors << (place + result.failure).toStdString() << std::endl;
            status = failureStatus;
        }
        return result.goOn;
    }

    int exitStatus() const { return status; }

private:
    Session& session;
    QString source;
    ProgressLine progress;
    int number = 0;
    int status = 0;
};

int runCommands(int descriptor, const Options& options, Session& session)
{
    Lines lines(session, options.script.isEmpty() ? QStringLiteral("standard input") : options.script);
    LineSource source(descriptor, session);
    QString line;
    bool goOn = true;
    while (goOn && source.next(line)) {
        if (source.isTerminal() && canShowLive() && parseCommand(line).kind == Command::Kind::Live) {
            goOn = showLive(session, [&](const QString& typed, std::ostream& answer) {
                source.keep(typed);
                return lines.carryOut(typed, true, answer, answer);
            });
            continue;
        }
        goOn = lines.carryOut(line, source.isTerminal(), std::cout, std::cerr);
    }
    return lines.exitStatus();
}

/// Not std::system(), which ignores Ctrl-C while the command runs: during a long "set", that is most of the
/// time.
int runInShell(const char* command)
{
    const char* const words[] = {"sh", "-c", command, nullptr};
    pid_t shell = 0;
    int status = -1;
    if (posix_spawn(&shell, "/bin/sh", nullptr, nullptr, const_cast<char* const*>(words), environ) == 0)
        while (waitpid(shell, &status, 0) == -1 && errno == EINTR)
            continue;
    return status;
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
        giveUp(QStringLiteral("%1: the directory cannot be created; name another one with --project-dir")
                   .arg(options.directory));
    const QString directory = QFileInfo(options.directory).canonicalFilePath();
    const QString module = QFileInfo(options.module).absoluteFilePath();

    QString error = enterPrivateUsr();
    if (error.isEmpty())
        error = mapProjectDirectory(directory);
    if (!error.isEmpty())
        giveUp(error);
    giveUpNamespaceRights();
    if (!pathMappingNotice().isEmpty())
        std::cerr << "panel_simulator: " << pathMappingNotice().toStdString() << std::endl;
    const ModuleLibrary library(module);
    if (!library.isLoaded())
        giveUp(library.error());

    setCommandRunner(runInShell);
    Session session(library, reading.project.get(), directory);
    session.start(std::cout, std::cerr);
    const int status = runCommands(input.handle(), options, session);
    session.stop(std::cout);
    return status;
}
