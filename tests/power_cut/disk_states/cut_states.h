// Enumerates the states in which a power cut can leave the disk.
// SPDX-License-Identifier: MIT
#pragma once

#include "tests/power_cut/disk_states/disk.h"
#include "tests/support/random_source.h"

#include <functional>
#include <optional>

/// Calls `visit` for the states that any subset of `unsynced` leaves on a disk that certainly has `synced`.
/// Writes and grown lengths are split into atoms, see atomsOf(). Atoms in files arrive in any order, changes
/// of names in the given order. A grown length without its bytes shows zeros or old bytes of the medium. A
/// file with up to 5 pending atoms, or up to 8 in different sectors, is taken through all its contents;
/// others, and products of more than 256 states, through `samples` random ones. Atoms that change nothing do
/// not count. Returns whether all states were visited.
bool forEachCutState(const Disk& synced, const std::vector<DiskOp>& unsynced, RandomSource& random,
                     int samples, const std::function<void(const DiskImage&)>& visit);

/// The disk with everything unsynced on it, except for random bytes in every page of 4096 bytes around a
/// write; nothing if there is no write.
std::optional<DiskImage> withSpoiledPages(const Disk& synced, const std::vector<DiskOp>& unsynced,
                                          RandomSource& random);
