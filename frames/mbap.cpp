// SPDX-License-Identifier: MIT
#include "mbap.h"

#include "../driver/base/byte_order.h"

#include <QtCore/QtGlobal>

namespace modbus_driver {
namespace mbap {

namespace {

/// A request of `size` bytes: the twelve bytes that every request has, then zeros.
QByteArray frame(int size, int station, wire::FunctionCode function, int address, int value)
{
    QByteArray bytes(size, '\0');
    char *at = bytes.data();
    wire::putWord(at + wire::LengthAt, size - wire::LengthFieldEnd);
    at[wire::UnitAt] = static_cast<char>(station & 0xFF);
    at[wire::FunctionAt] = static_cast<char>(function);
    wire::putWord(at + wire::AddressAt, address);
    wire::putWord(at + wire::ValueAt, value);
    return bytes;
}

/// How values of `bytes` bytes each are copied from the host's byte order to that of the wire.
struct ValueCopy
{
    int bytes;
    void (*copy)(void *to, const void *from, int values);
};

/// A WriteMultipleRegisters request with `values` values, or fewer when hostData has fewer.
QByteArray writeMultiple(int station, int address, int registers, const QByteArray &hostData, int values,
                         const ValueCopy &order)
{
    const int count = qMax(0, qMin(values, hostData.size() / order.bytes));
    const int size = wire::WriteDataAt + count * order.bytes;
    QByteArray bytes = frame(size, station, wire::WriteMultipleRegisters, address, registers);
    bytes.data()[wire::WriteByteCountAt] = static_cast<char>((static_cast<unsigned>(registers) * 2) & 0xFF);
    order.copy(bytes.data() + wire::WriteDataAt, hostData.constData(), count);
    return bytes;
}

} // namespace

QByteArray request(int station, wire::FunctionCode function, int address, int value)
{
    return frame(wire::RequestLength, station, function, address, value);
}

QByteArray writeRegisters(int station, int address, int registers, const QByteArray &hostData)
{
    return writeMultiple(station, address, registers, hostData, registers, {2, swapRegisterBytes});
}

QByteArray writePairs(int station, int address, int registers, const QByteArray &hostData)
{
    return writeMultiple(station, address, registers, hostData, registers / 2, {4, reverseBytes32});
}

} // namespace mbap
} // namespace modbus_driver
