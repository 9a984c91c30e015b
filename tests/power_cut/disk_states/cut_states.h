// The states in which a power cut can leave the disk.
// SPDX-License-Identifier: MIT
#ifndef TESTS_POWER_CUT_DISK_STATES_CUT_STATES_H
#define TESTS_POWER_CUT_DISK_STATES_CUT_STATES_H

#include "tests/power_cut/disk_states/disk.h"
#include "tests/power_cut/support/random.h"

#include <functional>

/// Calls `visit` for the states that any subset of `pending`, which are atoms, leaves on a disk that surely
/// holds `synced`: atoms in files arrive in any order, changes of names in their own. A file with up to 5
/// pending atoms, or up to 8 in different sectors, is taken through all its contents; others, and products
/// of more than 4096 states, through `samples` random ones. Atoms that change nothing do not count. Returns
/// whether all states were visited.
bool forEachCutState(const Disk& synced, const std::vector<DiskOp>& pending, Random& random, int samples,
                     const std::function<void(const DiskImage&)>& visit);

#endif
