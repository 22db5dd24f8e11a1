// SPDX-License-Identifier: MIT
/// \file
/// Applies a chosen fault to the reply. The station's thread calls this.

#pragma once

#include "delivery.h"
#include "fault.h"

/// Applies the fault to the delivery. `exception` and `greet` change nothing here: the station makes these
/// replies itself.
void applyFault(const Fault &fault, Delivery &delivery);
