// Shows the running panel on the whole terminal while commands are typed below it.
// SPDX-License-Identifier: MIT
#pragma once

#include "tools/panel_simulator/session.h"

#include <QtCore/QString>

#include <functional>

/// Whether both standard input and output are terminals that the view can be drawn on.
bool canShowLive();

/// Shows the panel until the user leaves the view with "live", Ctrl-C or the end of input. `carryOut` gets
/// each typed line except "live" itself; it writes its answer, and returns false when the panel is to stop.
/// The answers are printed again when the terminal is restored, which happens before a power cut. Returns
/// whether the panel is to go on.
bool showLive(Session& session,
              const std::function<bool(const QString& line, std::ostream& answer)>& carryOut);
