// SPDX-License-Identifier: MIT
/// \file
/// Moves values between the image arrays and the host's bytes. `bits` is the first of 8,193 bytes of
/// eight bits, `regs` the first of 65,536 registers in native byte order, low byte first. Host bytes are
/// one byte (0 or 1) a bit, two bytes a register low byte first, four bytes a 32-bit value least
/// significant byte first. A 32-bit value has its high word in the first register.
///
/// Bounds: an access that passes the end of the array is cut off there; a 32-bit value counts as inside
/// when both registers are. Below address 0 everything reads as 0 and nothing is written. No count
/// reaches further than a whole array.
///
/// Readers write to out[0], out[1], ... and let it grow as far as values were read; they never shorten
/// it. The caller holds imageMutex.

#pragma once

#include <QtCore/QByteArray>

#include "../driver/export.h"

/// Reads `count` bits from bit address `start`.
MODBUS_API void GetBitFromUC(QByteArray &out, unsigned char *bits, int start, int count);
/// Reads `count` bits from bit address `start`, register * 16 + bit.
MODBUS_API void GetBitFromUS(QByteArray &out, unsigned short *regs, int start, int count);
/// Reads `count` registers from register `start`.
MODBUS_API void GetWordFromUS(QByteArray &out, unsigned short *regs, int start, int count);
/// Reads 32-bit values; `count` is in registers and an odd last one is left out. A count of exactly 1
/// gives two bytes: the low word, which is register start + 1.
MODBUS_API void GetWordFromUI(QByteArray &out, unsigned short *regs, int start, int count);

/// Writes `count` bits, as far as `in` reaches: a byte of exactly 1 sets, any other clears.
MODBUS_API void SetBitToUC(int start, unsigned char *bits, QByteArray *in, int count);
/// The same for bits of registers.
MODBUS_API void SetBitToUS(int start, unsigned short *regs, QByteArray *in, int count);
/// Writes `count` registers, as far as `in` holds both bytes.
MODBUS_API void SetWordToUS(int start, unsigned short *regs, QByteArray *in, int count);
/// Writes 32-bit values, as far as `in` holds all four bytes; `count` is in registers, below 2 writes
/// nothing and an odd last one is left out.
MODBUS_API void SetWordToUI(int start, unsigned short *regs, QByteArray *in, int count);
