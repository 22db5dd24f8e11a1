// SPDX-License-Identifier: MIT
/// \file
/// From one access to its request frame. On the communication thread, listMutex held. Each builder appends
/// its request to pendingList and sets CommSettings::repliesExpected and repliesReceived. It does nothing for
/// an area that it does not serve.

#pragma once

#include "../export.h"
#include "../records.h"

/// \addtogroup Steps
/// @{

/// \name Reads
/// @{

/// Builds a read for areas 0 and 1 (ReadBool), 4 and 5 (ReadAnalog); nothing for any other area.
MODBUS_TCPIP_RTU_M_API void ReadRegister(RW_VAR *var);

/// Function 1 for area 0, 2 for area 1. startAddress is a bit, dataLength counts bytes of eight bits.
MODBUS_TCPIP_RTU_M_API void ReadBool(RW_VAR *var);

/// Function 4 for area 4, 3 for area 5. startAddress is a register, dataLength counts registers.
MODBUS_TCPIP_RTU_M_API void ReadAnalog(RW_VAR *var);

/// @}
/// \name Writes
/// @{

/// Builds the request for areas 0, 3, 5 and 7, and none for any other area. In every case it then calls
/// itemNotify with the write's hostId and, unless the last exchange failed or the area is 3, writes the
/// value into the image (WriteDataToLocal, which takes imageMutex). For area 3 the register's read half
/// stores the register as it was; the new bit is in the image when the register is read next.
MODBUS_TCPIP_RTU_M_API void WriteRegister(RW_VAR *var);

/// Function 5 for the coil startAddress: on when the first byte of data is exactly 1, else off. The area is
/// not looked at.
MODBUS_TCPIP_RTU_M_API void WriteBool(RW_VAR *var);

/// One bit of a holding register, startAddress register * 16 + bit: appends two requests, the read half
/// (function 3) and the write half (function 6), and expects two replies. The value of the write half is a
/// placeholder until the reply to the read half is stored: a first byte of data of 1 sets the bit, 0 clears
/// it, any other leaves it. Nothing for station 0: a broadcast cannot be read back.
MODBUS_TCPIP_RTU_M_API void WriteBool_WordOfBit(RW_VAR *var);

/// Function 16, for one register as well; this is what queued writes use. dataLength counts registers; data
/// holds area 5 as two bytes a register, any other area as four bytes a 32-bit value, least significant
/// byte first. Quantity and byte count follow dataLength, even when data is shorter and fewer bytes follow.
/// In another area than 5 an odd last register, or a dataLength of 1, sends no data for it.
MODBUS_TCPIP_RTU_M_API void WriteAnalog_10(RW_VAR *var);

/// Function 6 when dataLength is exactly 1 (missing data bytes are sent as 0), else as WriteAnalog_10.
MODBUS_TCPIP_RTU_M_API void WriteAnalog(RW_VAR *var);

/// @}
/// \name Remote frames
/// The driver's own compact frames, sent instead of Modbus requests while CommSettings::remoteMode is
/// nonzero. All fields high byte first, each keeping the low bits that fit:
///
///     0    frame length    3    linkId          7-10  startAddress    17-20   aux
///     1    hostId          4    station         11-12 dataLength      21..    value bytes, writes only
///     2    rwFlag          5-6  area            13-16 subIndex        last    byte sum of all before
/// @{

/// Appends one request for areas 0 and 1. Nothing for any other area: only bit reads are sent.
MODBUS_TCPIP_RTU_M_API void Remote_ReadVar(RW_VAR *var);

/// Appends one request for any area, then writes the value into the image (WriteDataToLocal, which
/// takes imageMutex) without waiting for the reply.
MODBUS_TCPIP_RTU_M_API void Remote_WriteVar(RW_VAR *var);

/// @}

/// @}
