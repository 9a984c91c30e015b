// Declares the runtime's access to the shell.
// SPDX-License-Identifier: MIT
#pragma once

#include "host_interface/visibility.h"

/// Runs a shell command and waits for its end. The result is its status, as the runtime reports it.
HOST_INTERFACE_PUBLIC int sys_base_do_system(const char* command);
