// SPDX-License-Identifier: MIT
#include "mbap.h"

#include <QtCore/QtGlobal>

#include <algorithm>

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

/// Copies groups of bytes, each turned round. Not inlined: GCC 12 at -O3 would warn of writes past a byte
/// array that it takes for an empty one.
template <int group> __attribute__((noinline)) void copyTurned(char *to, const char *from, int groups)
{
    for (; groups > 0; --groups, to += group, from += group)
        std::reverse_copy(from, from + group, to);
}

/// A WriteMultipleRegisters request whose data are groups of `group` bytes, each turned round, as many as
/// `groups` and hostData allow.
template <int group>
QByteArray writeTurned(int station, int address, int registers, const QByteArray &hostData, int groups)
{
    const int count = qMax(0, qMin(groups, hostData.size() / group));
    const int size = RegisterData + count * group;
    QByteArray bytes = frame(size, station, WriteMultipleRegisters, address, registers);
    bytes.data()[ByteCount] = static_cast<char>((static_cast<unsigned>(registers) * 2) & 0xFF);
    copyTurned<group>(bytes.data() + RegisterData, hostData.constData(), count);
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
