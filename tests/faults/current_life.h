// Tells which life was running when a test program crashes or hangs.
// SPDX-License-Identifier: MIT
#pragma once

/// Room for the description of the life in progress.
extern char currentLife[200];

/// From now on a crash or an alarm() prints currentLife on standard error before it ends the program.
void tellLifeOnCrash();
