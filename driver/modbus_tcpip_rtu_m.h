// SPDX-License-Identifier: MIT
/// \file
/// Modbus TCP master without input or output of its own. A host includes this one header.
///
/// host_calls.h is the contract: what to call, on which thread, with which result. records.h and codes.h
/// hold the records and numbers that go along. What is in steps/ is exported as well, for hosts that take
/// single steps of the driver themselves; a usual host needs none of it.

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
