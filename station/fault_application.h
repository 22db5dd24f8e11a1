// SPDX-License-Identifier: MIT
/// \file
/// Applies a chosen fault to the reply. The station's thread calls this.

#pragma once

#include "delivery.h"
#include "fault.h"

/// Applies the fault to the delivery. `exception` changes nothing here: the station has made its reply already.
void applyFault(const Fault &fault, Delivery &delivery);
