// SPDX-License-Identifier: MIT
/// \file
/// Encodes Modbus TCP requests; the layout is in driver/base/modbus_wire.h. Pure functions: no state, no
/// queue. Of station, address, value and quantity only the low bits that fit the field are sent.

#pragma once

#include <QtCore/QByteArray>

#include "../driver/base/modbus_wire.h"

namespace modbus_driver {
namespace mbap {

/// A 12-byte request; `value` is its value or quantity.
QByteArray request(int station, wire::FunctionCode function, int address, int value);

/// A WriteMultipleRegisters request with the first `registers` registers of `hostData` (low byte first).
/// Quantity and byte count (modulo 256) are always those of `registers`. Registers of which hostData lacks a
/// byte are left out. The length field counts the bytes that are sent.
QByteArray writeRegisters(int station, int address, int registers, const QByteArray &hostData);

/// The same for 32-bit values of two registers each, least significant byte first in `hostData`, most
/// significant byte first in the request. An odd last register is left out.
QByteArray writePairs(int station, int address, int registers, const QByteArray &hostData);

} // namespace mbap
} // namespace modbus_driver
