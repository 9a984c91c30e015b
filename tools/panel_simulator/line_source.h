// Supplies command lines from a terminal, a pipe or a script, while the panel's time passes.
// SPDX-License-Identifier: MIT
#pragma once

#include "tools/panel_simulator/session.h"

#include <QtCore/QByteArray>
#include <QtCore/QElapsedTimer>
#include <QtCore/QString>

#include <histedit.h>

#include <memory>

/// While it waits for a line, cyclic calls that come due are made; what they fail to save is told on standard
/// error.
class LineSource
{
public:
    /// `descriptor` and `session` stay the caller's. A terminal gets a prompt, line editing, completion with
    /// Tab, and a history that is kept over starts.
    LineSource(int descriptor, Session& session);

    /// False at the end of the input and, on a terminal, after Ctrl-C; a last line without a line feed
    /// counts.
    bool next(QString& line);
    bool isTerminal() const { return editor != nullptr; }
    /// Takes a line of a terminal into the history, unless it is empty.
    void keep(const QString& line);

private:
    bool nextEdited(QString& line);
    bool nextPlain(QString& line);
    /// Returns when there is something to read, or the end of the input.
    void wait();
    static int readKey(EditLine* editor, wchar_t* key);
    static unsigned char complete(EditLine* editor, int key);

    struct EndHistory
    {
        void operator()(History* history) const { history_end(history); }
    };
    struct EndEditor
    {
        void operator()(EditLine* editor) const { el_end(editor); }
    };

    int descriptor;
    Session& session;
    QElapsedTimer clock;
    QByteArray pending;
    bool ended = false;
    QByteArray historyFile; ///< empty when there is no place for one
    std::unique_ptr<History, EndHistory> history;
    std::unique_ptr<EditLine, EndEditor> editor; ///< null unless the descriptor is a terminal
};
