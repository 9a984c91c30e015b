// Orders retention entries.
// SPDX-License-Identifier: MIT
#include "define_header/address_records.h"

bool compare(const structMaintenance& a, const structMaintenance& b)
{
    return a.address.index < b.address.index;
}
