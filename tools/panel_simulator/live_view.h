// Shows the running panel on top of the terminal while commands are typed below it.
// SPDX-License-Identifier: MIT
#pragma once

#include "simulated_host/panel.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QStringList>

#include <deque>

/// Shows the mode, the countdown to the next cyclic call, the syncs, each area with its file, and the cells
/// that changed last.
class LiveView
{
public:
    static constexpr int frameMs = 250; ///< draw() is to be called about this often

    /// `panel` stays the caller's.
    explicit LiveView(const Panel& panel) : panel(panel) {}
    ~LiveView() { hide(); }
    LiveView(const LiveView&) = delete;
    LiveView& operator=(const LiveView&) = delete;

    /// Takes the top of the terminal on standard output; false when that is no terminal, or too low a one.
    bool show();
    void hide(); ///< gives it back
    bool isShown() const { return shown; }
    /// Brings a shown view up to date.
    void draw();

private:
    struct Change
    {
        QString area;
        int address;
        ushort value;
        QElapsedTimer since;
    };

    void noteChanges();
    QStringList lines() const;

    const Panel& panel;
    bool shown = false;
    MemoryAreas seen;           ///< as of the last frame
    std::deque<Change> changes; ///< the latest first
};
