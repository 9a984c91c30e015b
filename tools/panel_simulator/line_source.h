// Supplies command lines from a terminal, a pipe or a script, while the panel's time passes.
// SPDX-License-Identifier: MIT
#pragma once

#include "tools/panel_simulator/session.h"

#include <QtCore/QByteArray>
#include <QtCore/QElapsedTimer>
#include <QtCore/QString>

#include <histedit.h>

#include <memory>

/// While it waits for a line, it makes the cyclic calls that come due; what they fail to save is reported on
/// standard error.
class LineSource
{
public:
    /// The caller owns `descriptor` and `session`. A terminal gets a prompt, line editing, completion with
    /// Tab, and a history that is kept between starts.
    LineSource(int descriptor, Session& session);

    /// False at the end of the input and, on a terminal, after Ctrl-C. A last line may lack its line feed.
    bool next(QString& line);
    bool isTerminal() const { return editor != nullptr; }
    /// Adds a line typed on a terminal to the history, unless it is empty.
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
