// SPDX-License-Identifier: MIT
/// \file
/// Builders of read requests. On the communication thread, listMutex held. Each appends one
/// transaction to pendingList and expects one reply, or does nothing for an area it does not serve.

#pragma once

#include "../driver/export.h"
#include "../driver/records.h"

/// Builds a read for areas 0 and 1 (ReadBool), 4 and 5 (ReadAnalog); nothing for any other area.
MODBUS_API void ReadRegister(RW_VAR *var);

/// Function 1 for area 0, 2 for area 1. startAddress is a bit, dataLength counts bytes of eight bits.
MODBUS_API void ReadBool(RW_VAR *var);

/// Function 4 for area 4, 3 for area 5. startAddress is a register, dataLength counts registers.
MODBUS_API void ReadAnalog(RW_VAR *var);
