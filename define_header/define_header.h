// Address records, their order, their types and their wire format: include this one.
// SPDX-License-Identifier: MIT
#pragma once

#include "define_header/address_records.h"
#include "define_header/address_stream.h"
#include "define_header/address_type.h"
