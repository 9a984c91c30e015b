// Counts what was lost and keeps evidence of it.
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QStringList>

#include <map>
#include <utility>

/// Prints the message on standard error and ends the program with status 2.
[[noreturn]] void giveUp(const QString& message);

/// Something that was lost, and what is needed to investigate it.
struct Finding
{
    QString name; ///< of its folder
    QString title;
    QStringList lost;
    QStringList events; ///< of the life until the cut
    QByteArray projectXml;
    std::map<QString, QByteArray> files; ///< that the start found
};

/// Counts findings, and saves the first ten, each in its own folder; an older folder of the same name stays.
class Findings
{
public:
    /// Without a directory nothing is saved.
    explicit Findings(QString directory) : directory(std::move(directory)) {}

    void add(const Finding& finding);
    qint64 lost() const { return lostValues; }
    const QStringList& first() const { return firstLost; } ///< the lines of the first one

private:
    QString directory;
    QStringList firstLost;
    qint64 lostValues = 0;
    int kept = 0;
};
