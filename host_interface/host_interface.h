// Includes everything that the panel's runtime declares for its models.
// SPDX-License-Identifier: MIT
#pragma once

#include "host_interface/configuration_tree.h"
#include "host_interface/exchange_records.h"
#include "host_interface/extend_func_model_base.h"
#include "host_interface/interface_all.h"
#include "host_interface/interface_comm.h"
#include "host_interface/shell.h"
