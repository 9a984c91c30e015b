// Marks what the library offers to programs that load it; everything else stays inside.
// SPDX-License-Identifier: MIT
#pragma once

#define POWEROFF_PROTECT_EXPORT __attribute__((visibility("default")))
