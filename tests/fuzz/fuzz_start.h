// Prepares the process of a fuzzer of the module.
// SPDX-License-Identifier: MIT
#pragma once

/// Gives the process its own /usr/tavrin in memory, with an empty project directory, and a shell that runs
/// nothing. Returns 0; ends the process when that fails.
int startFuzzing();
