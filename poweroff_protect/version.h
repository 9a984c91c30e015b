// Says which version of the module this is, to the compiler and to a program that has loaded the library.
// SPDX-License-Identifier: MIT
#pragma once

#include "define_header/export.h"

// The build and the packages take the version from here.
#define POWEROFF_PROTECT_VERSION "1.1.0"
/// 10000 times the first part, 100 times the second, and the third: for comparisons.
#define POWEROFF_PROTECT_VERSION_NUMBER 10100

/// The version of the loaded library, as POWEROFF_PROTECT_VERSION was when it was built. Libraries
/// before 1.1.0 do not have this function. The text is the library's and goes away with it.
extern "C" POWEROFF_PROTECT_EXPORT const char* poweroffProtectVersion();
