// Marks what the runtime provides to the modules that it loads.
// SPDX-License-Identifier: MIT
#pragma once

/// Makes a symbol visible to modules even when the runtime is compiled with hidden visibility.
#define HOST_INTERFACE_PUBLIC __attribute__((visibility("default")))
