// Runs a compiled tool as a user would and keeps its output.
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

/// Runs `program` with `input` on its standard input, and waits at most a minute for its end. The words of
/// the environment variable TEST_EMULATOR, if any, come before the program.
ToolRun runTool(const QString& program, const QStringList& arguments, const QByteArray& input = QByteArray());

/// Keys to type as soon as new output contains the text.
struct Typing
{
    QByteArray after;
    QByteArray keys;
};

/// The same with a terminal of 30 lines as standard input, output and error. Types `keys` at once, then the
/// others in turn.
ToolRun runToolOnTerminal(const QString& program, const QStringList& arguments, const QByteArray& keys,
                          const std::vector<Typing>& later = {});
