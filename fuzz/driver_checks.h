// SPDX-License-Identifier: MIT
// What must be true of the driver after every single call, whatever the wire and the host did. For the fuzzers, and
// for the tests that run long sequences.

#pragma once

#include "modbus_tcpip_rtu_m.h"

/// The driver as it is after loading, with this record handed over. Nobody else may be using it.
void freshDriver(CommSettings *settings);

/// Says which of the driver's promises is broken, null while none is. `forced` is how many entries were queued past
/// the limit, with QueueAsIs. For the communication thread, with no panel thread beside it.
const char *violatedInvariant(int forced = 0);
