// Confines a failed allocation to the step in which it happened.
// SPDX-License-Identifier: MIT
#pragma once

#include <new>

/// Runs `step`. False when an allocation in it failed, which ended the step there.
template <typename Step> bool ranWithMemory(Step step)
{
    try {
        step();
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}
