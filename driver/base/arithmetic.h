// SPDX-License-Identifier: MIT
/// \file
/// 32-bit arithmetic on numbers that a host may set to any value. It is done in 64 bits, so nothing
/// overflows.

#pragma once

#include <QtCore/QtGlobal>

#include <limits>

namespace modbus_driver {

/// The value modulo 2^32 as a signed 32-bit number.
inline int wrapped(qint64 value)
{
    return static_cast<int>(static_cast<quint32>(static_cast<quint64>(value)));
}

/// The value, or the nearest number that fits 32 bits.
inline int saturated(qint64 value)
{
    return static_cast<int>(
        qBound<qint64>(std::numeric_limits<int>::min(), value, std::numeric_limits<int>::max()));
}

/// value / divisor, rounded up for negative values too. The divisor must be above 0.
inline qint64 ceilDiv(qint64 value, int divisor)
{
    const qint64 quotient = value / divisor;
    return value % divisor > 0 ? quotient + 1 : quotient;
}

} // namespace modbus_driver
