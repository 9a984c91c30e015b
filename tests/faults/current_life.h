// Tells which life was running when a test program crashes or hangs.
// SPDX-License-Identifier: MIT
#pragma once

/// Room for the description of the life in progress.
extern char currentLife[200];

/// From now on a crash prints currentLife on standard error before it ends the program, and so does an
/// alarm().
void tellLifeOnCrash();
