// Address records, their order, their types and their wire format: include this one.
// SPDX-License-Identifier: MIT
#ifndef DEFINE_HEADER_DEFINE_HEADER_H
#define DEFINE_HEADER_DEFINE_HEADER_H

#include "define_header/address_records.h"
#include "define_header/address_stream.h"
#include "define_header/address_type.h"

#endif
