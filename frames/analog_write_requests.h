// SPDX-License-Identifier: MIT
/// \file
/// Builders of register writes. On the communication thread, listMutex held. Each appends one
/// transaction and expects one reply. dataLength counts registers; data holds area 5 as two bytes a
/// register, any other area as four bytes a 32-bit value, least significant byte first. Quantity and
/// byte count are those of dataLength even when data is shorter and fewer bytes follow.

#pragma once

#include "../driver/export.h"
#include "../driver/records.h"

/// Function 16, for one register as well. This is what queued writes use.
MODBUS_API void WriteAnalog_10(RW_VAR *var);

/// Function 6 when dataLength is exactly 1 (missing data bytes go out as 0), else as WriteAnalog_10.
MODBUS_API void WriteAnalog(RW_VAR *var);
