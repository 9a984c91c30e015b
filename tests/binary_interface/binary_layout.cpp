// Makes the compiler check the offsets of fields in the records that runtime and module share. Generates no
// code.
// SPDX-License-Identifier: MIT
#include "poweroff_protect/poweroff_protect.h"

#include <cstddef>
#include <type_traits>

// The module object has virtual operations; GCC and Clang lay out such classes according to the target's C++
// ABI.
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

// The numbers are for the panel, 32-bit ARM. Elsewhere pointers are wider or 64-bit values aligned
// differently, so only the order is checked.
#ifdef __arm__
#define ON_THE_PANEL(condition) (condition)
#else
#define ON_THE_PANEL(condition) true
#endif

#define SIZE(type, bytes)                                                                                    \
    static_assert(ON_THE_PANEL(sizeof(type) == (bytes)), #type " must have " #bytes " bytes")
#define FIRST(type, field, offset)                                                                           \
    static_assert(ON_THE_PANEL(offsetof(type, field) == (offset)),                                           \
                  #type "::" #field " must lie at byte " #offset)
#define ORDER(type, previous, field)                                                                         \
    static_assert(offsetof(type, previous) < offsetof(type, field),                                          \
                  #type "::" #field " must come after " #previous)
/// A field, the one before it and its offset in bytes.
#define NEXT(type, previous, field, offset)                                                                  \
    ORDER(type, previous, field);                                                                            \
    FIRST(type, field, offset)

// A friend, because the module's own fields are private.
struct PoweroffProtectLayout
{
    FIRST(poweroff_protect, optLogType, 4);
    NEXT(poweroff_protect, optLogType, extModelParam, 8);
    NEXT(poweroff_protect, extModelParam, retentionMode, 12);
    NEXT(poweroff_protect, retentionMode, cyclePeriodMs, 16);
    NEXT(poweroff_protect, cyclePeriodMs, cycleRemainingMs, 24);
    NEXT(poweroff_protect, cycleRemainingMs, extModelString, 32);
    NEXT(poweroff_protect, extModelString, interfaceComm, 36);
    NEXT(poweroff_protect, interfaceComm, projectObject, 40);
    NEXT(poweroff_protect, projectObject, bitFileBlocks, 44);
    NEXT(poweroff_protect, bitFileBlocks, wordFileBlocks, 48);
    NEXT(poweroff_protect, wordFileBlocks, rwiFileBlocks, 52);
    NEXT(poweroff_protect, rwiFileBlocks, bitFileInfo, 56);
    NEXT(poweroff_protect, bitFileInfo, wordFileInfo, 60);
    NEXT(poweroff_protect, wordFileInfo, rwiFileInfo, 64);
    // The streams belong to the C++ library, which decides their size and alignment.
    ORDER(poweroff_protect, rwiFileInfo, bitFile);
    ORDER(poweroff_protect, bitFile, wordFile);
    ORDER(poweroff_protect, wordFile, rwiFile);
    ORDER(poweroff_protect, rwiFile, modelReady);
    ORDER(poweroff_protect, modelReady, saveAllEnabled);
    ORDER(poweroff_protect, saveAllEnabled, saveTimeMinutes);
};

SIZE(_ADDRESS_, 32);
FIRST(_ADDRESS_, link, 0);
NEXT(_ADDRESS_, link, station, 4);
NEXT(_ADDRESS_, station, block, 8);
NEXT(_ADDRESS_, block, number, 12);
NEXT(_ADDRESS_, number, index, 16);
NEXT(_ADDRESS_, index, spareText, 20);
NEXT(_ADDRESS_, spareText, length, 24);
NEXT(_ADDRESS_, length, bitOrWord, 28);

SIZE(structMaintenance, 440);
FIRST(structMaintenance, address, 0);
NEXT(structMaintenance, address, addressType, 32);
NEXT(structMaintenance, addressType, addressLength, 36);
NEXT(structMaintenance, addressLength, dataArea, 40);
static_assert(sizeof(structMaintenance::dataArea) == 400, "structMaintenance::dataArea must have 400 bytes");

SIZE(READADDRESS, 56);
FIRST(READADDRESS, address, 0);
NEXT(READADDRESS, address, extraText, 32);
NEXT(READADDRESS, extraText, extra1, 36);
NEXT(READADDRESS, extra1, extra2, 40);
NEXT(READADDRESS, extra2, extra3, 44);
NEXT(READADDRESS, extra3, extra4, 48);
NEXT(READADDRESS, extra4, extra5, 52);

SIZE(MaintenanceFileInfo, 44);
FIRST(MaintenanceFileInfo, address, 0);
NEXT(MaintenanceFileInfo, address, bitOffset, 32);
NEXT(MaintenanceFileInfo, bitOffset, fileOffset, 36);
NEXT(MaintenanceFileInfo, fileOffset, count, 40);

// Ordinary members: a runtime may hold pointers to them.
static_assert(std::is_member_function_pointer<decltype(&poweroff_protect::memoryPartition)>::value,
              "memoryPartition() must not be static");
static_assert(std::is_member_function_pointer<decltype(&poweroff_protect::fileMemoryMap)>::value,
              "fileMemoryMap() must not be static");
