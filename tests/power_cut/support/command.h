// Reads options, shows progress and keeps evidence.
// SPDX-License-Identifier: MIT
#pragma once

#include "simulated_host/module_library.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QElapsedTimer>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <map>

struct Options
{
    qint64 total; ///< cuts or states to make
    quint64 seed;
    QString module;
    QString evidence; ///< the folder for it
};

/// Reads --`unit` N, --seed S, --module PATH and --evidence DIR. Ends the program with status 2, and a
/// reason, when they are wrong.
Options readOptions(const QCoreApplication& application, const QString& unit, qint64 usualTotal,
                    const QString& description);

/// Says on standard error what is wrong and ends the program with status 2.
[[noreturn]] void giveUp(const QString& message);

/// The module, with a /usr/tavrin of this process only. Gives up when one of them fails.
ModuleLibrary loadPrivately(const QString& module);

/// A line on standard error that says how far it is, when that is a terminal.
class Progress
{
public:
    Progress(qint64 total, QString unit);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    void show(qint64 done);

private:
    qint64 total;
    QString unit;
    bool terminal;
    QElapsedTimer sinceLast;
};

/// Something that was lost, and what is needed to look into it.
struct Finding
{
    QString name; ///< of its folder
    QString title;
    QStringList lost;
    QStringList events; ///< of the life until the cut
    QByteArray projectXml;
    std::map<QString, QByteArray> files; ///< that the start found
};

/// Counts findings, and keeps the first ten in a folder each; an older folder of the same name stays.
class Findings
{
public:
    /// Without a directory nothing is kept.
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
