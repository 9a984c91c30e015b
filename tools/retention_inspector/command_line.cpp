// Understanding of the command line, help texts and exit status.
// SPDX-License-Identifier: MIT
#include "tools/retention_inspector/command_line.h"

#include "tools/retention_inspector/command.h"

#include <QtCore/QCommandLineParser>

#include <algorithm>

namespace {

const int findingStatus = 1;
const int usageStatus = 2;

const char* const programName = "retention_inspector";

Outcome failure(const QString& message)
{
    return {usageStatus, {}, QStringLiteral("%1: %2\n").arg(QLatin1String(programName), message)};
}

QString generalHelp()
{
    QString help =
        QStringLiteral(
            "Usage: %1 COMMAND ARGUMENTS [options]\n"
            "Shows, checks, explains and carries over the files in which a panel keeps its values.\n\n"
            "Commands:\n")
            .arg(QLatin1String(programName));
    for (const CommandForm& form : commandForms())
        help +=
            QStringLiteral("  %1%2\n").arg(QLatin1String(form.name), -10).arg(QLatin1String(form.summary));
    help +=
        QStringLiteral(
            "\nPROJECT.xml is the panel's project; DIR is the folder with its files maintenance-bit.dat,\n"
            "maintenance-word.dat and maintenance-RWI.dat.\n\n"
            "Options of every command:\n"
            "  --format FORMAT  text (for people), json or csv (for scripts)\n"
            "  --help           explains the command, with examples\n\n"
            "Exit status: 0 clean, 1 findings, 2 usage or unreadable input.\n\n"
            "Examples:\n"
            "  %1 layout project.xml\n"
            "  %1 migrate --help\n")
            .arg(QLatin1String(programName));
    return help;
}

void addOptions(QCommandLineParser& parser, const CommandForm& form)
{
    for (const OptionForm& option : form.options) {
        QStringList names(QString::fromLatin1(option.name));
        if (names.first() == QLatin1String("output"))
            names.prepend(QStringLiteral("o"));
        QCommandLineOption added(names, QString::fromLatin1(option.description));
        if (option.value)
            added.setValueName(QString::fromLatin1(option.value));
        parser.addOption(added);
    }
    parser.addOption({QStringLiteral("format"), QStringLiteral("text (the default), json or csv."),
                      QStringLiteral("FORMAT")});
    parser.addOption({QStringLiteral("help"), QStringLiteral("Explains the command.")});
}

QString commandHelp(const QCommandLineParser& parser, const CommandForm& form)
{
    // The parser's own text begins with a usage line that knows nothing of commands.
    const QString text = parser.helpText();
    QString help =
        QStringLiteral("Usage: %1 %2 %3 [options]\n")
            .arg(QLatin1String(programName), QLatin1String(form.name), form.arguments.join(QLatin1Char(' ')));
    help += text.mid(text.indexOf(QLatin1Char('\n')) + 1).trimmed();
    help +=
        QLatin1String("\n\nExit status: 0 clean, 1 findings, 2 usage or unreadable input.\n\nExamples:\n");
    for (const QString& example : QString::fromLatin1(form.examples).split(QLatin1Char('\n')))
        help +=
            QStringLiteral("  %1 %2 %3\n").arg(QLatin1String(programName), QLatin1String(form.name), example);
    return help;
}

bool readFormat(const QString& text, Format& format)
{
    const QStringList names = {QStringLiteral("text"), QStringLiteral("json"), QStringLiteral("csv")};
    const int at = names.indexOf(text);
    if (at < 0)
        return false;
    format = static_cast<Format>(at);
    return true;
}

Outcome runCommand(const CommandForm& form, const QStringList& words)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QString::fromLatin1(form.description));
    addOptions(parser, form);
    const QString seeHelp =
        QStringLiteral(" (see %1 %2 --help)").arg(QLatin1String(programName), QLatin1String(form.name));
    if (!parser.parse(words))
        return failure(parser.errorText() + seeHelp);
    if (parser.isSet(QStringLiteral("help")))
        return {0, commandHelp(parser, form), {}};

    Invocation invocation;
    invocation.arguments = parser.positionalArguments();
    if (invocation.arguments.size() != form.arguments.size())
        return failure(QStringLiteral("expected: %1 %2%3")
                           .arg(QLatin1String(form.name), form.arguments.join(QLatin1Char(' ')), seeHelp));
    for (const OptionForm& option : form.options)
        if (parser.isSet(QLatin1String(option.name)))
            invocation.options.insert(QLatin1String(option.name), parser.value(QLatin1String(option.name)));
    if (parser.isSet(QStringLiteral("format")) &&
        !readFormat(parser.value(QStringLiteral("format")), invocation.format))
        return failure(QStringLiteral("--format \"%1\": expected text, json or csv")
                           .arg(parser.value(QStringLiteral("format"))));

    const CommandResult result = form.run(invocation);
    if (!result.error.isEmpty())
        return failure(result.error);
    return {result.report.isClean() ? 0 : findingStatus, formatted(result.report, invocation.format), {}};
}

} // namespace

Outcome runInspector(const QStringList& words)
{
    const QString command = words.value(1);
    if (command == QLatin1String("--help") || command == QLatin1String("-h") ||
        command == QLatin1String("help"))
        return {0, generalHelp(), {}};
    if (command == QLatin1String("--version"))
        return {0, QLatin1String(programName) + QLatin1String(" " INSPECTOR_VERSION "\n"), {}};
    const std::vector<CommandForm>& forms = commandForms();
    const auto form = std::find_if(forms.begin(), forms.end(), [&command](const CommandForm& candidate) {
        return command == QLatin1String(candidate.name);
    });
    if (form != forms.end())
        return runCommand(*form, words.mid(1));
    QStringList names;
    for (const CommandForm& known : forms)
        names.append(QLatin1String(known.name));
    const QString expected =
        QStringLiteral("expected one of %1 (see --help)").arg(names.join(QLatin1String(", ")));
    return failure(command.isEmpty() ? expected
                                     : QStringLiteral("unknown command \"%1\": %2").arg(command, expected));
}
