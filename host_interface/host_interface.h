// Everything that the panel's runtime declares for its models: include this one.
// SPDX-License-Identifier: MIT
#ifndef HOST_INTERFACE_HOST_INTERFACE_H
#define HOST_INTERFACE_HOST_INTERFACE_H

#include "host_interface/configuration_tree.h"
#include "host_interface/exchange_records.h"
#include "host_interface/extend_func_model_base.h"
#include "host_interface/interface_all.h"
#include "host_interface/interface_comm.h"
#include "host_interface/shell.h"

#endif
