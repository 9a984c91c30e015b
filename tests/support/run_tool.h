// Runs a compiled tool as a user would and keeps what it said.
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <vector>

struct ToolRun
{
    int status;     ///< exit status; minus the signal number when a signal ended it
    QByteArray out; ///< standard output
    QByteArray err; ///< standard error
};

/// Runs `program` with `input` on its standard input and waits for its end, a minute at most. The words of
/// the environment variable TEST_EMULATOR, if any, come before the program.
ToolRun runTool(const QString& program, const QStringList& arguments, const QByteArray& input = QByteArray());

/// Keys that are typed as soon as new output holds the text.
struct Typing
{
    QByteArray after;
    QByteArray keys;
};

/// The same with a terminal of 30 lines as standard input, output and error, on which `keys` are typed at
/// once, then the others in turn.
ToolRun runToolOnTerminal(const QString& program, const QStringList& arguments, const QByteArray& keys,
                          const std::vector<Typing>& later = {});
