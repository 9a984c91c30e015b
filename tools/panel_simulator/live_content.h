// Composes the text that the live view shows of a running panel, for a terminal of any width.
// SPDX-License-Identifier: MIT
#pragma once

#include "tools/panel_simulator/session.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QStringList>

#include <deque>

/// Remembers which cells changed since its construction or the panel's last restart.
class LiveContent
{
public:
    /// The caller owns `session`.
    explicit LiveContent(const Session& session) : session(session), seen(session.panel().areas) {}

    /// The mode, the countdown to the next cyclic call and the syncs; each area with its file; the cells that
    /// changed last; of whole areas, those that changed since the last save. No line is longer than `width`.
    QStringList lines(int width);

private:
    struct Change
    {
        QString area;
        int address;
        ushort value;
        QElapsedTimer since;
    };

    void noteChanges();
    QString changedText(int width) const;

    const Session& session;
    MemoryAreas seen;           ///< as of the last call
    std::deque<Change> changes; ///< the latest first
};
