// SPDX-License-Identifier: MIT
/// \file
/// Writing one bit of a holding register: read the register, change the bit, write the register back.

#pragma once

#include "../driver/export.h"
#include "../driver/records.h"

/// Appends two transactions, the read (function 3) and the write-back (function 6), and expects two
/// replies; startAddress is register * 16 + bit. The write-back's value is a placeholder until the
/// read's reply is stored (image/write_back.h). Nothing for station 0: a broadcast cannot be read back.
/// On the communication thread, listMutex held.
MODBUS_API void WriteBool_WordOfBit(RW_VAR *var);
