// SPDX-License-Identifier: MIT
/// \file
/// Block checks over bytes, and hexadecimal digits. Pure functions: no state, no lock, any thread. Only
/// CalSUM is used by the driver itself, to close remote frames.

#pragma once

#include "../export.h"

/// \addtogroup Steps
/// @{

/// Sum of `count` bytes, low 16 bits.
MODBUS_TCPIP_RTU_M_API unsigned short CalSUM(const unsigned char *bytes, unsigned short count);

/// Modbus CRC-16 (polynomial 0xA001 reflected, start 0xFFFF) as a number; on a serial line its low byte
/// goes first. 0xFFFF for no bytes.
MODBUS_TCPIP_RTU_M_API unsigned short CalCRC(const unsigned char *bytes, unsigned short count);

/// Modbus LRC, 1 to 256: 256, not 0, when the low byte of the sum is 0. Callers mask it for a byte.
MODBUS_TCPIP_RTU_M_API int CalLRC(const unsigned char *bytes, unsigned short count);

/// Exclusive or of all bytes. The first byte is read even when `count` is 0.
MODBUS_TCPIP_RTU_M_API unsigned short CalXOR(const unsigned char *bytes, unsigned short count);

/// 0..15 to the character codes of 0..9 and A..F. Not range checked: value + 48 up to 9, else value + 55.
MODBUS_TCPIP_RTU_M_API int DigitalToASCII(int value);

/// Character code to digit: up to 47 and 64 give 0, 48..63 give 0..15, from 65 (A) on the code less 55.
/// Lower case is not folded: a gives 42.
MODBUS_TCPIP_RTU_M_API int ASCIIToDigital(int ch);

/// @}
