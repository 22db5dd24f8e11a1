// SPDX-License-Identifier: MIT
/// \file
/// The constants of the Modbus TCP frame: positions, lengths, function codes. The driver, the host and the
/// station all take them from here. All fields are high byte first.
///
///     0-1 transaction    4-5 number of bytes that follow    7    function code
///     2-3 protocol, 0    6   unit identifier                8..  depends on the function
///
/// A request has its address at 8 and its value or quantity at 10. A reply to a read has its byte count at 8
/// and its data from 9 on; a reply to a write repeats bytes 7 to 11 of the request; an exception reply has
/// 0x80 added to the function code and the exception code at 8.

#pragma once

#include <QtCore/QByteArray>

namespace modbus_driver {
namespace wire {

enum FunctionCode {
    ReadCoils = 1,
    ReadDiscreteInputs = 2,
    ReadHoldingRegisters = 3,
    ReadInputRegisters = 4,
    WriteSingleCoil = 5,
    WriteSingleRegister = 6,
    WriteMultipleCoils = 15, ///< the driver never sends it
    WriteMultipleRegisters = 16,
    MaskWriteRegister = 22,          ///< the driver never sends it
    ReadWriteMultipleRegisters = 23, ///< the driver never sends it
};
inline bool isReadFunction(int function)
{
    return function >= ReadCoils && function <= ReadInputRegisters;
}

enum { ExceptionFlag = 0x80 }; ///< added to the function code of an exception reply

/// The first byte of each field.
enum Position {
    TransactionAt = 0,
    ProtocolAt = 2,
    LengthAt = 4,
    UnitAt = 6,
    FunctionAt = 7,
    AddressAt = 8,         ///< of a request, and of a write's echo
    ValueAt = 10,          ///< of a request: value or quantity; of a write's echo
    WriteByteCountAt = 12, ///< of a request that writes several
    WriteDataAt = 13,      ///< likewise
    ReadByteCountAt = 8,   ///< of a reply
    ReadDataAt = 9,        ///< of a reply
    ExceptionCodeAt = 8,   ///< of an exception reply
};

/// Numbers of bytes.
enum Length {
    LengthFieldEnd = 6,   ///< the length field counts what comes after it
    HeaderLength = 7,     ///< the MBAP header
    RequestLength = 12,   ///< every request but those that write several
    WriteEchoLength = 12, ///< the reply to every write
    ReadReplyHeader = 9,  ///< of a read's reply, ahead of its data
    ExceptionReplyLength = 9,
    ShortestLengthField = 2,  ///< unit identifier and function code
    LongestLengthField = 254, ///< unit identifier and the longest PDU
};

/// The protocol's limits for one request. The driver does not check them. The host in host/ warns, and the
/// simulated station refuses.
enum Limit {
    MostBitsRead = 2000,
    MostRegistersRead = 125,
    MostBitsWritten = 1968,
    MostRegistersWritten = 123,
};

/// Addresses of each table: 0 to 65535.
enum { AddressesOfTable = 65536 };

/// The value field of a single coil write that means "on".
enum { CoilOn = 0xFF00 };

/// The byte at `index`, or 0 beyond the end.
inline int byteAt(const QByteArray &frame, int index)
{
    return index < frame.size() ? static_cast<quint8>(frame.at(index)) : 0;
}

/// The field of two bytes from `index` on; bytes beyond the end count as 0.
inline int wordAt(const QByteArray &frame, int index)
{
    return byteAt(frame, index) << 8 | byteAt(frame, index + 1);
}

/// Writes the low 16 bits of a value, high byte first.
inline void putWord(char *to, int value)
{
    to[0] = static_cast<char>((value >> 8) & 0xFF);
    to[1] = static_cast<char>(value & 0xFF);
}

} // namespace wire
} // namespace modbus_driver
