// Runs the command that the command line names: help, options, inputs, report and exit status.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/refusal.h"
#include "tools/retention_inspector/command.h"
#include "tools/retention_inspector/report/changes.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QThread>
#include <QtCore/QTime>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>
#include <utility>

namespace {

const int findingStatus = 1;
const int refusalStatus = 2;
const unsigned long watchMs = 500; // between two checks of watched files

const char* const programName = "retention_inspector";
const char* const statusHelp =
    "Exit status: 0 no findings, 1 findings, 2 usage error or refused input or output.";

bool print(const QString& text, FILE* stream)
{
    const QByteArray bytes = text.toUtf8();
    const auto size = static_cast<std::size_t>(bytes.size());
    return std::fwrite(bytes.constData(), 1, size, stream) == size && std::fflush(stream) == 0;
}

QString generalHelp()
{
    QString help =
        QStringLiteral("Usage: %1 COMMAND ARGUMENTS [options]\n"
                       "Shows, checks, edits and migrates the files in which a panel retains its values.\n"
                       "\n"
                       "Commands:\n")
            .arg(QLatin1String(programName));
    for (const Command* command : commands())
        help += QStringLiteral("  %1%2\n")
                    .arg(QLatin1String(command->name), -10)
                    .arg(QLatin1String(command->summary));
    help += QStringLiteral("\n"
                           "PROJECT.xml is the panel's project; DIR is the directory with its files\n"
                           "%1, %2 and %3.\n"
                           "\n")
                .arg(QLatin1String(areaFacts[0].fileName), QLatin1String(areaFacts[1].fileName),
                     QLatin1String(areaFacts[2].fileName));
    help += QStringLiteral("Options of every command:\n"
                           "  --format FORMAT  text (for people), json (for scripts) or csv (one table)\n"
                           "  --table NAME     the table to write as csv\n"
                           "  --quiet          no report, only the exit status\n"
                           "  --help           help for the command, with examples; same as help COMMAND\n"
                           "\n"
                           "Numbers are decimal or, with 0x, hexadecimal. NO_COLOR=1 turns off colour.\n"
                           "\n"
                           "%2\n"
                           "\n"
                           "Examples:\n"
                           "  %1 layout project.xml\n"
                           "  %1 migrate --help\n")
                .arg(QLatin1String(programName), QLatin1String(statusHelp));
    return help;
}

QStringList argumentNames(const Command& command)
{
    QStringList names;
    for (const Argument& argument : command.arguments) {
        const QString name = QString::fromLatin1(argument.name);
        names.append(argument.count == Argument::Count::AtMostOne ? QLatin1Char('[') + name + QLatin1Char(']')
                     : argument.count == Argument::Count::AtLeastOne ? name + QLatin1String("...")
                                                                     : name);
    }
    return names;
}

bool takes(const Command& command, int words)
{
    const auto arguments = static_cast<int>(command.arguments.size());
    switch (command.arguments.back().count) {
    case Argument::Count::AtMostOne:
        return words == arguments || words == arguments - 1;
    case Argument::Count::AtLeastOne:
        return words >= arguments;
    case Argument::Count::One:
        break;
    }
    return words == arguments;
}

/// Such as "migrate OLD.xml NEW.xml DIR --output DIR2".
QString callText(const Command& command)
{
    QStringList words = QStringList(QLatin1String(command.name)) + argumentNames(command);
    for (const Option& option : command.options)
        if (option.kind == Option::Kind::Required)
            words << QLatin1String("--") + QLatin1String(option.name) << QLatin1String(option.value);
    return words.join(QLatin1Char(' '));
}

QString commandHelp(const QCommandLineParser& parser, const Command& command)
{
    // The parser's own text begins with a usage line without commands.
    const QString text = parser.helpText();
    QString help =
        QStringLiteral("Usage: %1 %2 [options]\n").arg(QLatin1String(programName), callText(command)) +
        text.mid(text.indexOf(QLatin1Char('\n')) + 1).trimmed();
    help += QStringLiteral("\n\n%1\n\nExamples:\n").arg(QLatin1String(statusHelp));
    for (const QString& example : QString::fromLatin1(command.examples).split(QLatin1Char('\n')))
        help += QStringLiteral("  %1 %2 %3\n")
                    .arg(QLatin1String(programName), QLatin1String(command.name), example);
    return help;
}

void addOptions(QCommandLineParser& parser, const Command& command)
{
    for (const Option& option : command.options) {
        QStringList names(QString::fromLatin1(option.name));
        if (names.first() == QLatin1String("output"))
            names.prepend(QStringLiteral("o"));
        QString description = QString::fromLatin1(option.description);
        if (option.usual)
            description += QStringLiteral(" (default: %1)").arg(QLatin1String(option.usual));
        QCommandLineOption added(names, description + QLatin1Char('.'));
        if (option.value)
            added.setValueName(QString::fromLatin1(option.value));
        parser.addOption(added);
    }
    parser.addOption({QStringLiteral("format"), QStringLiteral("Output format: text (default), json or csv."),
                      QStringLiteral("FORMAT")});
    parser.addOption({QStringLiteral("table"),
                      QStringLiteral("The table to write as csv: a key of the JSON output, facts, findings, "
                                     "or all for every table (default: the first table with rows)."),
                      QStringLiteral("NAME")});
    parser.addOption(
        {{QStringLiteral("q"), QStringLiteral("quiet")}, QStringLiteral("No report, only the exit status.")});
    parser.addOption({QStringLiteral("help"), QStringLiteral("Shows this help.")});
}

const ReportFormat& formatAskedFor(const QCommandLineParser& parser)
{
    if (!parser.isSet(QStringLiteral("format")))
        return reportFormats.front();
    const QString name = parser.value(QStringLiteral("format"));
    for (const ReportFormat& format : reportFormats)
        if (name == QLatin1String(format.name))
            return format;
    throw Refusal(QStringLiteral("--format \"%1\": expected text, json or csv").arg(name));
}

Inputs readInputs(const Command& command, const QCommandLineParser& parser)
{
    Inputs inputs;
    inputs.options = usualOptions(command);
    for (const Option& option : command.options) {
        const QString name = QString::fromLatin1(option.name);
        if (parser.isSet(name))
            inputs.options.insert(name, option.kind == Option::Kind::Repeatable
                                            ? parser.values(name).join(QLatin1Char(','))
                                            : parser.value(name));
    }
    std::size_t next = 0;
    for (const QString& word : parser.positionalArguments()) {
        const Argument& argument = command.arguments[next];
        if (next + 1 < command.arguments.size())
            ++next;
        switch (argument.kind) {
        case Argument::Kind::Project:
            inputs.projects.push_back({word, makeLayout(readSettings(word))});
            break;
        case Argument::Kind::Path:
            inputs.paths.append(word);
            break;
        case Argument::Kind::Files:
            inputs.files.push_back(openRetentionFiles(word));
            requireReadable(inputs.files.back());
            break;
        case Argument::Kind::FilesAsFound:
            inputs.files.push_back(openRetentionFiles(word));
            break;
        }
    }
    return inputs;
}

/// True on a terminal, unless the user turned colour off (https://no-color.org).
bool wantsColour(int descriptor)
{
    return isatty(descriptor) != 0 && qEnvironmentVariableIsEmpty("NO_COLOR") && qgetenv("TERM") != "dumb";
}

void requireArguments(const Command& command, const QCommandLineParser& parser, const QString& seeHelp)
{
    const bool complete =
        takes(command, parser.positionalArguments().size()) &&
        std::all_of(command.options.begin(), command.options.end(), [&parser](const Option& option) {
            return option.kind != Option::Kind::Required || parser.isSet(QLatin1String(option.name));
        });
    if (!complete)
        throw Refusal(QStringLiteral("expected: ") + callText(command) + seeHelp);
}

/// The contents and states of the files in one byte array, to tell whether anything changed.
QByteArray contentsOf(const Inputs& inputs)
{
    QByteArray contents;
    for (const RetentionFiles& files : inputs.files)
        for (const RetentionFile& file : files)
            contents += QByteArray::number(static_cast<int>(file.state)) + ' ' +
                        QByteArray::number(file.size) + ' ' + file.read(0, file.size);
    return contents;
}

/// Prints `out`, then what changes in the command's files, until interrupted.
[[noreturn]] void watchFiles(const Command& command, const QCommandLineParser& parser, Report shown,
                             const QString& out)
{
    QString next = out;
    QByteArray contents;
    for (;;) {
        if (!print(next, stdout))
            std::exit(refusalStatus);
        next.clear();
        QThread::msleep(watchMs);
        const Inputs inputs = readInputs(command, parser);
        const QByteArray now = contentsOf(inputs);
        if (now == contents)
            continue;
        contents = now;
        Report report = command.run(inputs);
        next = changesText(shown, report, QTime::currentTime());
        shown = std::move(report);
    }
}

/// Runs a command line, of which the first word is the command's name; returns the exit status.
int runCommand(const Command& command, const QStringList& words, QString& out)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QString::fromLatin1(command.description));
    addOptions(parser, command);
    const QString seeHelp =
        QStringLiteral(" (see %1 %2 --help)").arg(QLatin1String(programName), QLatin1String(command.name));
    if (!parser.parse(words))
        throw Refusal(parser.errorText() + seeHelp);
    if (parser.isSet(QStringLiteral("help"))) {
        out = commandHelp(parser, command);
        return 0;
    }
    requireArguments(command, parser, seeHelp);
    const ReportFormat& format = formatAskedFor(parser);
    const bool csv = qstrcmp(format.name, "csv") == 0;
    if (parser.isSet(QStringLiteral("table")) && !csv)
        throw Refusal(QStringLiteral("--table needs --format csv") + seeHelp);
    const Inputs inputs = readInputs(command, parser);
    if (inputs.has("watch") && &format != &reportFormats.front())
        throw Refusal(QStringLiteral("--watch needs --format text") + seeHelp);
    Report report = command.run(inputs);
    report.command = QLatin1String(command.name);
    const bool besideProduct = !report.product.isNull();
    report.colour = wantsColour(csv || besideProduct ? STDERR_FILENO : STDOUT_FILENO);
    if (parser.isSet(QStringLiteral("table")))
        report.csvTable = parser.value(QStringLiteral("table"));
    out = format.write(report);
    const int status = report.isClean() ? 0 : findingStatus;
    if (parser.isSet(QStringLiteral("quiet"))) {
        out = QString::fromUtf8(report.product);
        return status;
    }
    if (inputs.has("watch"))
        watchFiles(command, parser, std::move(report), out);
    if (besideProduct) { // the product has standard output for itself
        print(out, stderr);
        out = QString::fromUtf8(report.product);
    } else if (csv && report.csvTable != QLatin1String("findings") &&
               report.csvTable != QLatin1String("all")) {
        print(remarksText(report), stderr);
    }
    return status;
}

int run(const QStringList& words, QString& out)
{
    const bool explain = words.value(1) == QLatin1String("help") && words.size() > 2;
    const QString name = words.value(explain ? 2 : 1);
    if (name == QLatin1String("--help") || name == QLatin1String("-h") || name == QLatin1String("help")) {
        out = generalHelp();
        return 0;
    }
    if (name == QLatin1String("--version")) {
        out = QLatin1String(programName) + QLatin1String(" " INSPECTOR_VERSION "\n");
        return 0;
    }
    if (const Command* const command = commandNamed(name))
        return runCommand(*command, explain ? QStringList{name, QStringLiteral("--help")} : words.mid(1),
                          out);
    QStringList known;
    for (const Command* command : commands())
        known.append(QLatin1String(command->name));
    const QString expected =
        QStringLiteral("expected one of %1 (see --help)").arg(known.join(QLatin1String(", ")));
    throw Refusal(name.isEmpty() ? expected
                                 : QStringLiteral("unknown command \"%1\": %2").arg(name, expected));
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    QString out;
    int status = refusalStatus;
    try {
        status = run(QCoreApplication::arguments(), out);
    } catch (const Refusal& refusal) {
        print(QStringLiteral("%1: %2\n").arg(QLatin1String(programName), refusal.message()), stderr);
    }
    if (!print(out, stdout)) {
        std::perror("retention_inspector: standard output");
        return refusalStatus;
    }
    return status;
}
