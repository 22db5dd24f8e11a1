// SPDX-License-Identifier: MIT
/// \file
/// From a queued write to its request, and the single-coil builder. On the communication thread,
/// listMutex held.

#pragma once

#include "../driver/export.h"
#include "../driver/records.h"

/// Builds the request for areas 0, 3, 5 and 7, and none for any other area. In every case it then calls
/// itemNotify with the write's hostId and, unless the last exchange failed or the area is 3, writes the
/// value into the image (WriteDataToLocal, which takes imageMutex). A bit of a register reaches the
/// image only with the register's read, when the other bits are known.
MODBUS_API void WriteRegister(RW_VAR *var);

/// Function 5 for the coil startAddress: on when the first byte of data is exactly 1, else off. The
/// area is not looked at.
MODBUS_API void WriteBool(RW_VAR *var);
