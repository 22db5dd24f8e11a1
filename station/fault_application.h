// SPDX-License-Identifier: MIT
/// \file
/// Applies a chosen fault to the reply. Used on the station's thread.

#pragma once

#include "delivery.h"
#include "fault.h"

/// Changes the delivery as the fault says. `exception` and `greet` change nothing here, because the station
/// makes these replies itself.
void applyFault(const Fault &fault, Delivery &delivery);
