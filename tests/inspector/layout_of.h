// Makes the layout of a project that a test has built.
// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/module_test.h"
#include "tools/retention_core/layout.h"

inline Layout layoutOf(const object& project)
{
    return makeLayout(readSettings(const_cast<object*>(&project))); // which only reads it
}

inline Layout layoutOf(const std::vector<Entry>& entries)
{
    return layoutOf(*perAddressProject(entries));
}
