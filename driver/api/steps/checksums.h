// SPDX-License-Identifier: MIT
/// \file
/// Checksums of bytes, and conversion of hexadecimal digits. Pure functions: no state, no lock, any thread.
/// The driver itself uses only CalSUM, for the last byte of remote frames.

#pragma once

#include "../export.h"

/// \addtogroup Steps
/// @{

/// Sum of `count` bytes, low 16 bits.
MODBUS_TCPIP_RTU_M_API unsigned short CalSUM(const unsigned char *bytes, unsigned short count);

/// Modbus CRC-16 (polynomial 0xA001 reflected, start 0xFFFF) as a number. A serial line sends its low byte
/// first. 0xFFFF for no bytes.
MODBUS_TCPIP_RTU_M_API unsigned short CalCRC(const unsigned char *bytes, unsigned short count);

/// Modbus LRC, 1 to 256. It is 256, not 0, when the low byte of the sum is 0. The LRC byte is its low byte.
MODBUS_TCPIP_RTU_M_API int CalLRC(const unsigned char *bytes, unsigned short count);

/// Exclusive or of all bytes. The first byte is read even when `count` is 0.
MODBUS_TCPIP_RTU_M_API unsigned short CalXOR(const unsigned char *bytes, unsigned short count);

/// Converts 0 to 15 to the character codes of 0 to 9 and A to F. The range is not checked: the result is
/// value + 48 up to 9, else value + 55.
MODBUS_TCPIP_RTU_M_API int DigitalToASCII(int value);

/// Converts a character code to a digit: 48 to 63 give 0 to 15, codes from 65 (A) on give the code minus 55.
/// 64 and all codes below 48 give 0. Lower case is not converted to upper case: a gives 42.
MODBUS_TCPIP_RTU_M_API int ASCIIToDigital(int ch);

/// @}
