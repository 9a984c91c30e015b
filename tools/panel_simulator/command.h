// Parses the command language of the simulated panel.
// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <vector>

struct Command
{
    enum class Kind
    {
        Nothing,
        Get,
        Set,
        Expect,
        Cycle,
        Watch,
        Status,
        Live,
        Restart,
        PowerCut,
        Stop,
        Help
    };

    Kind kind = Kind::Nothing;
    QString area;               ///< Get, Set, Expect: "LB", "LW" or "RWI"
    int address = 0;            ///< Get, Set, Expect: first cell
    int count = 0;              ///< Get: number of cells, at least 1, inside the area
    std::vector<ushort> values; ///< Set, Expect: at least one, inside the area
    QString error;              ///< what was expected instead; empty for a good command
};

/// Parses one line. Text after a '#' is a comment; an otherwise empty line is Nothing. Numbers are decimal,
/// or hexadecimal with 0x; a word takes -32768 to 65535, a bit 0 or 1.
Command parseCommand(const QString& line);

/// A list of the commands for the user, one per line.
QString commandHelp();

/// The words that can complete the last word of `beginning`.
QStringList completionsOf(const QString& beginning);
