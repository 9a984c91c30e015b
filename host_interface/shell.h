// The runtime's way to the shell.
// SPDX-License-Identifier: MIT
#pragma once

#include "host_interface/visibility.h"

/// Runs a shell command, returns when it has ended; the result is its status, as the runtime reports it.
HOST_INTERFACE_PUBLIC int sys_base_do_system(const char* command);
