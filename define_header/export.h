// Marks what the library exports; everything else is hidden.
// SPDX-License-Identifier: MIT
#pragma once

#define POWEROFF_PROTECT_EXPORT __attribute__((visibility("default")))
