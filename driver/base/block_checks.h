// SPDX-License-Identifier: MIT
/// \file
/// The checksums that the driver, the host and the station share. Pure functions.

#pragma once

namespace modbus_driver {

/// The sum of `count` bytes, modulo 2^32.
inline unsigned byteSum(const unsigned char *bytes, unsigned count)
{
    unsigned sum = 0;
    for (unsigned i = 0; i < count; ++i)
        sum += bytes[i];
    return sum;
}

/// Modbus CRC-16 (polynomial 0xA001 reflected, start 0xFFFF).
inline unsigned crc16(const unsigned char *bytes, unsigned count)
{
    unsigned crc = 0xFFFF;
    for (unsigned i = 0; i < count; ++i) {
        crc ^= bytes[i];
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1) != 0 ? (crc >> 1) ^ 0xA001 : crc >> 1;
    }
    return crc;
}

} // namespace modbus_driver
