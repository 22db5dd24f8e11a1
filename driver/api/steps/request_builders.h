// SPDX-License-Identifier: MIT
/// \file
/// Build the request frame of one access. Called on the communication thread with listMutex held. Each
/// builder appends its request to pendingList and sets CommSettings::repliesExpected and repliesReceived. It
/// builds nothing for an area that it does not serve.

#pragma once

#include "../export.h"
#include "../records.h"

/// \addtogroup Steps
/// @{

/// \name Reads
/// @{

/// Calls ReadBool for areas 0 and 1, ReadAnalog for areas 4 and 5. Does nothing for any other area.
MODBUS_TCPIP_RTU_M_API void ReadRegister(RW_VAR *var);

/// Function 1 for area 0, 2 for area 1. startAddress is a bit, dataLength counts bytes of eight bits.
MODBUS_TCPIP_RTU_M_API void ReadBool(RW_VAR *var);

/// Function 4 for area 4, 3 for area 5. startAddress is a register, dataLength counts registers.
MODBUS_TCPIP_RTU_M_API void ReadAnalog(RW_VAR *var);

/// @}
/// \name Writes
/// @{

/// Builds the request for areas 0, 3, 5 and 7, and none for any other area. In every case it then calls
/// itemNotify with the write's hostId. It also writes the value into the image (WriteDataToLocal, which takes
/// imageMutex), unless the last exchange failed or the area is 3. For area 3 the reply to the read half
/// stores the old register; the new bit is in the image after the next read of the register.
MODBUS_TCPIP_RTU_M_API void WriteRegister(RW_VAR *var);

/// Function 5 for the coil startAddress: on when the first byte of data is exactly 1, else off. The area is
/// not checked.
MODBUS_TCPIP_RTU_M_API void WriteBool(RW_VAR *var);

/// One bit of a holding register, startAddress register * 16 + bit: appends two requests, the read half
/// (function 3) and the write half (function 6), and expects two replies. The value of the write half is a
/// placeholder until the reply to the read half is stored: a first byte of data of 1 sets the bit, 0 clears
/// it, any other byte leaves it. Builds nothing for station 0, because a broadcast read has no reply.
MODBUS_TCPIP_RTU_M_API void WriteBool_WordOfBit(RW_VAR *var);

/// Function 16, also for one register. Queued writes use it. dataLength counts registers. For area 5 data has
/// two bytes for each register, for any other area four bytes for each 32-bit value, least significant byte
/// first. Quantity and byte count in the frame are those of dataLength, even when data is shorter and fewer
/// bytes are sent. For any other area than 5 no data is sent for an odd last register.
MODBUS_TCPIP_RTU_M_API void WriteAnalog_10(RW_VAR *var);

/// Function 6 when dataLength is exactly 1 (missing data bytes are sent as 0), else as WriteAnalog_10.
MODBUS_TCPIP_RTU_M_API void WriteAnalog(RW_VAR *var);

/// @}
/// \name Remote frames
/// The driver's own compact frames, sent instead of Modbus requests while CommSettings::remoteMode is
/// nonzero. All fields are high byte first. A value that does not fit its field loses its high bits:
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
