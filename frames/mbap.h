// SPDX-License-Identifier: MIT
/// \file
/// The bytes of a Modbus TCP request: seven bytes of MBAP header, then the PDU. Pure encoding, no state.
///
///     0-1 transaction, always 0    4-5 number of bytes that follow    7   function code
///     2-3 protocol, always 0       6   unit identifier                8-9 address      10.. see below

#pragma once

#include <QtCore/QByteArray>

namespace mbap {

enum FunctionCode {
    ReadCoils = 1,
    ReadDiscreteInputs = 2,
    ReadHoldingRegisters = 3,
    ReadInputRegisters = 4,
    WriteSingleCoil = 5,
    WriteSingleRegister = 6,
    WriteMultipleRegisters = 16,
};

enum Length {
    RequestLength = 12,   ///< every request but WriteMultipleRegisters
    WriteEchoLength = 12, ///< the reply to every write
    ReadReplyHeader = 9,  ///< MBAP header, function code, byte count
    LengthFieldEnd = 6,   ///< the length field counts what comes after it
};

/// Where the value or quantity stands in a request.
enum ValueIndex { ValueHigh = 10, ValueLow = 11 };

/// A 12-byte request. Station, address and value keep only the low bits that fit their field.
QByteArray request(int station, FunctionCode function, int address, int value);

/// A WriteMultipleRegisters request with the first `registers` registers of `hostData` (low byte first) in
/// wire order (high byte first). The quantity and the byte count (modulo 256) follow `registers`; registers
/// that hostData does not hold wholly are left out, and the length field follows the bytes that are there.
QByteArray writeRegisters(int station, int address, int registers, const QByteArray &hostData);

/// The same for 32-bit values in two registers each: least significant byte first becomes most
/// significant byte first over all four bytes. An odd last register is left out.
QByteArray writePairs(int station, int address, int registers, const QByteArray &hostData);

} // namespace mbap
