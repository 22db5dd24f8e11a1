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

/// A frame of `size` bytes with everything that all requests have.
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

/// A WriteMultipleRegisters request whose data are groups of `group` bytes, each turned round, as many as
/// `groups` and hostData allow.
template <int group>
QByteArray writeTurned(int station, int address, int registers, const QByteArray &hostData, int groups)
{
    const int count = qMax(0, qMin(groups, hostData.size() / group));
    QByteArray bytes =
        frame(RegisterData + count * group, station, WriteMultipleRegisters, address, registers);
    char *to = bytes.data();
    to[ByteCount] = static_cast<char>((static_cast<unsigned>(registers) * 2) & 0xFF);
    to += RegisterData;
    const char *from = hostData.constData();
    for (int i = 0; i < count; ++i, from += group, to += group)
        std::reverse_copy(from, from + group, to);
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
