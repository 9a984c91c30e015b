// Options, progress, counts and evidence.
// SPDX-License-Identifier: MIT
#include "tests/power_cut/support/command.h"

#include "simulated_host/private_directory.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <iostream>
#include <unistd.h>

namespace {

quint64 numberOption(const QCommandLineParser& parser, const QString& name, quint64 least)
{
    bool isNumber = false;
    const quint64 number = parser.value(name).toULongLong(&isNumber);
    if (!isNumber || number < least || number > Q_INT64_C(0x7fffffffffffffff))
        giveUp(QStringLiteral("--%1 %2: give a number of %3 or more")
                   .arg(name, parser.value(name), QString::number(least)));
    return number;
}

void writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        giveUp(QStringLiteral("%1: cannot be written: %2").arg(path, file.errorString()));
}

} // namespace

void giveUp(const QString& message)
{
    std::cerr << qPrintable(QCoreApplication::applicationName()) << ": " << qPrintable(message) << std::endl;
    std::exit(2);
}

Options readOptions(const QCoreApplication& application, const QString& unit, qint64 usualTotal,
                    const QString& description)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(description);
    parser.addHelpOption();
    const QCommandLineOption total(unit, QStringLiteral("How many %1 to make at least.").arg(unit),
                                   QStringLiteral("N"), QString::number(usualTotal));
    const QCommandLineOption seed(QStringLiteral("seed"), QStringLiteral("Where the random numbers begin."),
                                  QStringLiteral("S"), QStringLiteral("1"));
    const QCommandLineOption module(QStringLiteral("module"), QStringLiteral("The module binary."),
                                    QStringLiteral("PATH"), QStringLiteral(MODULE_PATH));
    const QCommandLineOption evidence(
        QStringLiteral("evidence"),
        QStringLiteral("Folder for what belongs to a failure: project, files and a report."),
        QStringLiteral("DIR"), QStringLiteral("build/power_cut"));
    parser.addOptions({total, seed, module, evidence});
    if (!parser.parse(application.arguments()))
        giveUp(parser.errorText() + QStringLiteral(" (see --help)"));
    if (parser.isSet(QStringLiteral("help")))
        parser.showHelp(0);
    if (!parser.positionalArguments().isEmpty())
        giveUp(
            QStringLiteral("'%1' is not an option (see --help)").arg(parser.positionalArguments().first()));
    return {static_cast<qint64>(numberOption(parser, unit, 1)), numberOption(parser, seed.names().first(), 0),
            QFileInfo(parser.value(module)).absoluteFilePath(), parser.value(evidence)};
}

ModuleLibrary loadPrivately(const QString& module)
{
    const QString error = enterPrivateUsr();
    if (!error.isEmpty())
        giveUp(error);
    if (!pathMappingNotice().isEmpty())
        std::cerr << qPrintable(pathMappingNotice()) << std::endl;
    ModuleLibrary library(module);
    if (!library.isLoaded())
        giveUp(library.error());
    return library;
}

Progress::Progress(qint64 total, QString unit)
    : total(total), unit(std::move(unit)), terminal(isatty(STDERR_FILENO))
{
    sinceLast.start();
}

Progress::~Progress()
{
    if (terminal)
        std::cerr << "\r\033[K" << std::flush;
}

void Progress::show(qint64 done)
{
    if (!terminal || sinceLast.elapsed() < 200)
        return;
    sinceLast.restart();
    std::cerr << '\r' << done << " of " << total << ' ' << qPrintable(unit) << std::flush;
}

void Findings::add(const Finding& finding)
{
    lostValues += finding.lost.size();
    if (firstLost.isEmpty())
        firstLost = finding.lost;
    if (directory.isEmpty() || ++kept > 10)
        return;
    QString folder = directory + QLatin1Char('/') + finding.name;
    for (int n = 2; QFile::exists(folder); ++n)
        folder = QStringLiteral("%1/%2-%3").arg(directory, finding.name).arg(n);
    if (!QDir().mkpath(folder))
        giveUp(QStringLiteral("%1: cannot be made; name another folder with --evidence").arg(folder));
    QStringList report = {finding.title};
    report += finding.lost;
    report += QStringLiteral("Events of this life until the cut:");
    report += finding.events;
    writeFile(folder + QLatin1String("/project.xml"), finding.projectXml);
    writeFile(folder + QLatin1String("/report.txt"), report.join(QLatin1String("\n")).toUtf8() + '\n');
    for (const auto& [file, bytes] : finding.files)
        writeFile(folder + QLatin1Char('/') + file, bytes);
    std::cerr << qPrintable(finding.title) << "\n  " << qPrintable(finding.lost.value(0))
              << "\n  evidence: " << qPrintable(folder) << std::endl;
}
