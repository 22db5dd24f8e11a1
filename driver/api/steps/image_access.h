// SPDX-License-Identifier: MIT
/// \file
/// The image's own steps: values between the image arrays and the host's bytes, replies into the image,
/// values per station. The caller holds imageMutex, except where a line says otherwise.
///
/// `bits` is the first of 8,193 bytes of eight bits, `regs` the first of 65,536 registers in native byte
/// order. Host bytes are one byte (0 or 1) a bit, two bytes a register low byte first, four bytes a 32-bit
/// value least significant byte first. A 32-bit value has its high word in the first register.
///
/// Bounds: an access that passes the end of the array is clipped there; a 32-bit value counts as inside
/// when both registers are. Below address 0 everything reads as 0 and nothing is written. No count reaches
/// further than a whole array.

#pragma once

#include <QtCore/QByteArray>

#include "../export.h"
#include "../records.h"

/// \addtogroup Steps
/// @{

/// \name Readers
/// They write to out[0], out[1], ... and let it grow as far as values were read. They never shorten it.
/// @{

/// Reads `count` bits from bit address `start`.
MODBUS_TCPIP_RTU_M_API void GetBitFromUC(QByteArray &out, unsigned char *bits, int start, int count);
/// Reads `count` bits from bit address `start`, register * 16 + bit.
MODBUS_TCPIP_RTU_M_API void GetBitFromUS(QByteArray &out, unsigned short *regs, int start, int count);
/// Reads `count` registers from register `start`.
MODBUS_TCPIP_RTU_M_API void GetWordFromUS(QByteArray &out, unsigned short *regs, int start, int count);
/// Reads 32-bit values; `count` is in registers and an odd last one is left out. A count of exactly 1 gives
/// two bytes: the low word, which is register start + 1.
MODBUS_TCPIP_RTU_M_API void GetWordFromUI(QByteArray &out, unsigned short *regs, int start, int count);

/// @}
/// \name Writers
/// @{

/// Writes `count` bits, as far as `in` reaches: a byte of exactly 1 sets, any other clears.
MODBUS_TCPIP_RTU_M_API void SetBitToUC(int start, unsigned char *bits, QByteArray *in, int count);
/// The same for bits of registers.
MODBUS_TCPIP_RTU_M_API void SetBitToUS(int start, unsigned short *regs, QByteArray *in, int count);
/// Writes `count` registers, as far as `in` holds both bytes.
MODBUS_TCPIP_RTU_M_API void SetWordToUS(int start, unsigned short *regs, QByteArray *in, int count);
/// Writes 32-bit values, as far as `in` holds all four bytes; `count` is in registers, below 2 writes
/// nothing and an odd last one is left out.
MODBUS_TCPIP_RTU_M_API void SetWordToUI(int start, unsigned short *regs, QByteArray *in, int count);

/// Writes var's data to the image or, while CommSettings::multiStation is nonzero, to the records of its
/// station. Areas 0, 3, 5 and 7; nothing for any other. startAddress and dataLength are in bits or
/// registers; data as in SetRegisterData. With values per station the start address alone picks the bit of
/// area 3: several bits of one access all change that bit, and only bytes 0 and 1 change it. Takes imageMutex
/// itself.
MODBUS_TCPIP_RTU_M_API void WriteDataToLocal(RW_VAR *var);

/// @}
/// \name Storing replies
/// For the communication thread, which holds imageMutex, except for replies of another link, and listMutex
/// for the read half of a bit-in-register write. The request in flight says what the reply holds; without one
/// nothing is stored. Bytes that the reply lacks leave the image arrays as they were.
/// @{

/// Stores the reply in the image arrays (multiStation 0) or in the per-station records, and completes the
/// write half of a bit-in-register write. A per-station store empties the values for which the reply lacks
/// bytes. It gives the value that it touched last the length of the whole data, with zeros behind the value;
/// readers look at the first two bytes only. A store that touched none does that to the first record of the
/// list: a broadcast read, which brings no data, empties that one. No reply stores more than one whole table.
MODBUS_TCPIP_RTU_M_API void SaveToLocalDataErea(QByteArray *reply);

/// Stores registers. For the read half of a bit-in-register write it also completes the write half.
MODBUS_TCPIP_RTU_M_API void SpecialRegisterSave(QByteArray *reply, unsigned short *regs);

/// Stores whole bytes of bits, from byte startAddress / 8 on.
MODBUS_TCPIP_RTU_M_API void SaveBitToUC(QByteArray *reply, unsigned char *bits);

/// Stores registers, from register startAddress on; the reply holds each high byte first.
MODBUS_TCPIP_RTU_M_API void SaveWordToUS(QByteArray *reply, unsigned short *regs);

/// @}

/// The index in extendList of the first record with this key; a record of four zero bytes is appended when
/// there is none. Constant time on average. A host may append records to the list itself, or clear it: both
/// are noticed. A key that was changed in place is noticed when the look-up meets it, not always.
MODBUS_TCPIP_RTU_M_API int ExtendFindSameVar(int station, int area, int address);

/// @}
