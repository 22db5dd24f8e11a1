// SPDX-License-Identifier: MIT
#include "mbap.h"

#include "byte_order.h"

#include <QtCore/QtGlobal>

namespace mbap {

namespace {

enum { LengthHigh = 4, Unit = 6, Function = 7, AddressHigh = 8, ByteCount = 12, RegisterData = 13 };

void putHighFirst(char *to, int value)
{
    to[0] = static_cast<char>((value >> 8) & 0xFF);
    to[1] = static_cast<char>(value & 0xFF);
}

/// A request of `size` bytes: the twelve that all have, then zeros.
QByteArray frame(int size, int station, FunctionCode function, int address, int value)
{
    QByteArray bytes(size, '\0');
    char *at = bytes.data();
    putHighFirst(at + LengthHigh, size - LengthFieldEnd);
    at[Unit] = static_cast<char>(station & 0xFF);
    at[Function] = static_cast<char>(function);
    putHighFirst(at + AddressHigh, address);
    putHighFirst(at + ValueHigh, value);
    return bytes;
}

/// How groups of `bytes` bytes are copied, each turned round.
struct Turning
{
    int bytes;
    void (*copy)(void *to, const void *from, int groups);
};

/// A WriteMultipleRegisters request whose data are such groups, as many as `groups` and hostData allow.
QByteArray writeTurned(int station, int address, int registers, const QByteArray &hostData, int groups,
                       const Turning &turning)
{
    const int count = qMax(0, qMin(groups, hostData.size() / turning.bytes));
    const int size = RegisterData + count * turning.bytes;
    QByteArray bytes = frame(size, station, WriteMultipleRegisters, address, registers);
    bytes.data()[ByteCount] = static_cast<char>((static_cast<unsigned>(registers) * 2) & 0xFF);
    turning.copy(bytes.data() + RegisterData, hostData.constData(), count);
    return bytes;
}

} // namespace

QByteArray request(int station, FunctionCode function, int address, int value)
{
    return frame(RequestLength, station, function, address, value);
}

QByteArray writeRegisters(int station, int address, int registers, const QByteArray &hostData)
{
    return writeTurned(station, address, registers, hostData, registers, {2, byteOrder::turnRegisters});
}

QByteArray writePairs(int station, int address, int registers, const QByteArray &hostData)
{
    return writeTurned(station, address, registers, hostData, registers / 2, {4, byteOrder::turnPairs});
}

} // namespace mbap
