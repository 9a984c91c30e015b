// What fuzzers of the module do first.
// SPDX-License-Identifier: MIT
#pragma once

/// Gives the process its own /usr/tavrin in memory, with an empty project directory, and a shell that runs
/// nothing. Returns 0; ends the process when that is not to be had.
int startFuzzing();
