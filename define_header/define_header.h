// Includes everything about address records: records, order, types and streaming.
// SPDX-License-Identifier: MIT
#pragma once

#include "define_header/address_records.h"
#include "define_header/address_stream.h"
#include "define_header/address_type.h"
