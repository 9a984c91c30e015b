// Supplies command lines from a terminal, a pipe or a script, while the panel's time passes.
// SPDX-License-Identifier: MIT
#pragma once

#include "simulated_host/panel.h"
#include "tools/panel_simulator/live_view.h"

#include <QtCore/QByteArray>
#include <QtCore/QElapsedTimer>
#include <QtCore/QString>

#include <histedit.h>

#include <memory>

/// While it waits for a line, cyclic calls that come due are made and a shown view is kept up to date.
class LineSource
{
public:
    /// `descriptor`, `panel` and `view` stay the caller's. A terminal gets a prompt, line editing and a
    /// history for as long as the object lives.
    LineSource(int descriptor, Panel& panel, LiveView& view);

    /// False at the end of the input; a last line without a line feed counts.
    bool next(QString& line);

private:
    bool nextEdited(QString& line);
    bool nextPlain(QString& line);
    /// Returns when there is something to read, or the end of the input.
    void wait();
    static int readKey(EditLine* editor, wchar_t* key);

    struct EndHistory
    {
        void operator()(History* history) const { history_end(history); }
    };
    struct EndEditor
    {
        void operator()(EditLine* editor) const { el_end(editor); }
    };

    int descriptor;
    Panel& panel;
    LiveView& view;
    QElapsedTimer clock;
    QByteArray pending;
    bool ended = false;
    std::unique_ptr<History, EndHistory> history;
    std::unique_ptr<EditLine, EndEditor> editor; ///< null unless the descriptor is a terminal
};
