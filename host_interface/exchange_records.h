// Defines the two records that runtime and models exchange about changed cells. Their layouts are part of the
// binary interface.
// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

/// A watch record asks the runtime to report changes of `changeSize` cells of an area from `address` on.
struct RegisterValueChangeSize
{
    int hostWord0;            ///< the runtime's; a model sets 0
    int hostWord4;            ///< the runtime's; a model sets -1
    int address;              ///< first watched cell
    int hostWord12;           ///< the runtime's; a model sets 0
    char areaName[32];        ///< zero-terminated: "LB", "LW" or "RWI"
    unsigned char hostFlag48; ///< the runtime's; a model sets 0
    int changeSize;           ///< number of watched cells
};

/// A change message says that the cell `address` of the area `areaName` has a new value. Models read these
/// two fields and nothing else.
struct _ExtendTriggerMsg_t // NOLINT(bugprone-reserved-identifier): the runtime's own name
{
    unsigned char hostBytes0[12]; ///< the runtime's
    int address;                  ///< the changed cell
    unsigned char hostBytes16[4]; ///< the runtime's
    char areaName[32];            ///< zero-terminated area name
};

static_assert(sizeof(RegisterValueChangeSize) == 56, "watch record: 56 bytes");
static_assert(offsetof(RegisterValueChangeSize, hostWord4) == 4, "watch record: hostWord4 at 4");
static_assert(offsetof(RegisterValueChangeSize, address) == 8, "watch record: address at 8");
static_assert(offsetof(RegisterValueChangeSize, hostWord12) == 12, "watch record: hostWord12 at 12");
static_assert(offsetof(RegisterValueChangeSize, areaName) == 16, "watch record: areaName at 16");
static_assert(offsetof(RegisterValueChangeSize, hostFlag48) == 48, "watch record: hostFlag48 at 48");
static_assert(offsetof(RegisterValueChangeSize, changeSize) == 52, "watch record: changeSize at 52");
static_assert(offsetof(_ExtendTriggerMsg_t, address) == 12, "change message: address at 12");
static_assert(offsetof(_ExtendTriggerMsg_t, areaName) == 20, "change message: areaName at 20");
