// Writes folders of evidence.
// SPDX-License-Identifier: MIT
#include "tests/power_cut/disk_states/findings.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <cstdlib>
#include <iostream>

void giveUp(const QString& message)
{
    std::cerr << "power_cut_disk_states: " << qPrintable(message) << std::endl;
    std::exit(2);
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
    const QStringList report = QStringList(finding.title) + finding.lost +
                               QStringList(QStringLiteral("Events of this life until the cut:")) +
                               finding.events;
    std::map<QString, QByteArray> evidence = finding.files;
    evidence[QStringLiteral("project.xml")] = finding.projectXml;
    evidence[QStringLiteral("report.txt")] = report.join(QLatin1String("\n")).toUtf8() + '\n';
    for (const auto& [name, bytes] : evidence) {
        QFile file(folder + QLatin1Char('/') + name);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            giveUp(QStringLiteral("%1: cannot be written: %2").arg(file.fileName(), file.errorString()));
    }
    std::cerr << qPrintable(finding.title) << "\n  " << qPrintable(finding.lost.value(0))
              << "\n  evidence: " << qPrintable(folder) << std::endl;
}
