// SPDX-License-Identifier: MIT
#include "mbap.h"

#include <QtCore/QtGlobal>

#include <cstring>

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

/// Whole groups of `group` bytes, each turned round, as many as `groups` and hostData allow.
QByteArray turned(const QByteArray &hostData, int groups, int group)
{
    const int count = qMax(0, qMin(groups, hostData.size() / group));
    QByteArray wire(count * group, '\0');
    const char *from = hostData.constData();
    char *to = wire.data();
    for (int i = 0; i < count; ++i, from += group) {
        for (int byte = group - 1; byte >= 0; --byte)
            *to++ = from[byte];
    }
    return wire;
}

} // namespace

QByteArray request(int station, FunctionCode function, int address, int value)
{
    return frame(RequestLength, station, function, address, value);
}

QByteArray writeRegisters(int station, int address, int registers, const QByteArray &wireData)
{
    const int size = RegisterData + wireData.size();
    QByteArray bytes = frame(size, station, WriteMultipleRegisters, address, registers);
    char *at = bytes.data();
    at[ByteCount] = static_cast<char>((static_cast<unsigned>(registers) * 2) & 0xFF);
    std::memcpy(at + RegisterData, wireData.constData(), static_cast<std::size_t>(wireData.size()));
    return bytes;
}

QByteArray wireRegisters(const QByteArray &hostData, int registers)
{
    return turned(hostData, registers, 2);
}

QByteArray wirePairs(const QByteArray &hostData, int registers)
{
    return turned(hostData, registers / 2, 4);
}

} // namespace mbap
