// Gives the version of the module, to the compiler and to a program that has loaded the library.
// SPDX-License-Identifier: MIT
#pragma once

#include "define_header/export.h"

// The build and the packages take the version from here.
#define POWEROFF_PROTECT_VERSION "1.1.0"
/// For comparisons: 10000 * major + 100 * minor + patch.
#define POWEROFF_PROTECT_VERSION_NUMBER 10100

/// The loaded library's POWEROFF_PROTECT_VERSION. Libraries before 1.1.0 do not have this function. The text
/// belongs to the library and is gone when that is unloaded.
extern "C" POWEROFF_PROTECT_EXPORT const char* poweroffProtectVersion();
