// Marks what the runtime supplies to the modules that it loads.
// SPDX-License-Identifier: MIT
#pragma once

/// Visible to modules also where the runtime is compiled with hidden symbols.
#define HOST_INTERFACE_PUBLIC __attribute__((visibility("default")))
