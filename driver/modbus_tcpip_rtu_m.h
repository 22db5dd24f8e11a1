// SPDX-License-Identifier: MIT
/// \file
/// Modbus TCP master without input or output of its own. A host includes this one header.
///
/// host_calls.h is the contract: the calls, their threads and their results. records.h and codes.h have the
/// records and the numbers that these calls use. The headers in steps/ declare internal steps, which are
/// exported too. A few hosts call these steps directly; a usual host does not need them.

#pragma once

#include "api/codes.h"
#include "api/host_calls.h"
#include "api/records.h"
#include "api/version.h"

#include "api/steps/checksums.h"
#include "api/steps/driver_object.h"
#include "api/steps/image_access.h"
#include "api/steps/list_building.h"
#include "api/steps/reply_judging.h"
#include "api/steps/request_builders.h"
