// Marks what the library offers to programs that load it; everything else stays inside.
// SPDX-License-Identifier: MIT
#ifndef DEFINE_HEADER_EXPORT_H
#define DEFINE_HEADER_EXPORT_H

#define POWEROFF_PROTECT_EXPORT __attribute__((visibility("default")))

#endif
