// Names the three areas, their files and their sizes, for tests and models that do not ask the module.
// SPDX-License-Identifier: MIT
#pragma once

#include <array>

struct TestArea
{
    const char* name;
    const char* fileName;
    bool bits;
    int imageBytes; ///< of the whole area, in the panel's memory and in its file
};

inline constexpr std::array<TestArea, 3> testAreas = {{{"LB", "maintenance-bit.dat", true, 65536},
                                                       {"LW", "maintenance-word.dat", false, 131072},
                                                       {"RWI", "maintenance-RWI.dat", false, 131072}}};
