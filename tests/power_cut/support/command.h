// What the power-cut commands have in common: options, progress, counts, evidence.
// SPDX-License-Identifier: MIT
#ifndef TESTS_POWER_CUT_SUPPORT_COMMAND_H
#define TESTS_POWER_CUT_SUPPORT_COMMAND_H

#include "simulated_host/module_library.h"
#include "tests/power_cut/support/panel_project.h"
#include "tests/power_cut/support/promise.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QElapsedTimer>
#include <QtCore/QString>

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

struct Counts
{
    qint64 units = 0; ///< cuts or states
    qint64 synced = 0;
    qint64 checked = 0;
    qint64 lost = 0;
};

/// Prints the last line. Returns the exit status: 1 when something was lost.
int printCounts(const Counts& counts, const QString& unit);

/// Keeps what is needed to look into failures, one folder each; only the first ten are kept.
class Evidence
{
public:
    explicit Evidence(QString directory) : directory(std::move(directory)) {}

    /// `name` tells which run and which cut it was; an older folder of that name stays beside it. `files` are
    /// the retention files that the start found.
    void add(const QString& name, const PanelProject& project, const std::map<QString, QByteArray>& files,
             const QStringList& report);

private:
    QString directory;
    int kept = 0;
};

#endif
