// SPDX-License-Identifier: MIT
#include "mbap.h"

#include <QtCore/QtGlobal>

#include <algorithm>

namespace mbap {

namespace {

enum { LengthHigh = 4, Unit = 6, Function = 7, AddressHigh = 8, RegisterData = 13 };

void putHighFirst(char *to, int value)
{
    to[0] = static_cast<char>((value >> 8) & 0xFF);
    to[1] = static_cast<char>(value & 0xFF);
}

/// The twelve bytes that all requests have, with room for the `size` bytes of the whole request.
QByteArray frame(int size, int station, FunctionCode function, int address, int value)
{
    QByteArray bytes;
    bytes.reserve(size);
    bytes.fill('\0', RequestLength);
    char *at = bytes.data();
    putHighFirst(at + LengthHigh, size - LengthFieldEnd);
    at[Unit] = static_cast<char>(station & 0xFF);
    at[Function] = static_cast<char>(function);
    putHighFirst(at + AddressHigh, address);
    putHighFirst(at + ValueHigh, value);
    return bytes;
}

/// Turns round every group of bytes. Not inlined: GCC 12 at -O3 would warn of writes past a byte array that
/// it takes for an empty one.
template <int group> __attribute__((noinline)) void turnEach(char *bytes, int groups)
{
    for (; groups > 0; --groups, bytes += group)
        std::reverse(bytes, bytes + group);
}

/// A WriteMultipleRegisters request whose data are groups of `group` bytes, each turned round, as many as
/// `groups` and hostData allow.
template <int group>
QByteArray writeTurned(int station, int address, int registers, const QByteArray &hostData, int groups)
{
    const int count = qMax(0, qMin(groups, hostData.size() / group));
    const int size = RegisterData + count * group;
    QByteArray bytes = frame(size, station, WriteMultipleRegisters, address, registers);
    bytes.append(static_cast<char>((static_cast<unsigned>(registers) * 2) & 0xFF));
    bytes.append(hostData.constData(), count * group);
    turnEach<group>(bytes.data() + RegisterData, count);
    return bytes;
}

} // namespace

QByteArray request(int station, FunctionCode function, int address, int value)
{
    return frame(RequestLength, station, function, address, value);
}

QByteArray writeRegisters(int station, int address, int registers, const QByteArray &hostData)
{
    return writeTurned<2>(station, address, registers, hostData, registers);
}

QByteArray writePairs(int station, int address, int registers, const QByteArray &hostData)
{
    return writeTurned<4>(station, address, registers, hostData, registers / 2);
}

} // namespace mbap
