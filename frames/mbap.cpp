// SPDX-License-Identifier: MIT
#include "mbap.h"

#include <QtCore/QtGlobal>

namespace mbap {

namespace {

enum { LengthHigh = 4, Unit = 6, Function = 7, AddressHigh = 8, RegisterData = 13 };

void putHighFirst(char *to, int value)
{
    to[0] = static_cast<char>((value >> 8) & 0xFF);
    to[1] = static_cast<char>(value & 0xFF);
}

/// The twelve bytes that all requests have; `size` is that of the whole request.
QByteArray frame(int size, int station, FunctionCode function, int address, int value)
{
    QByteArray bytes(RequestLength, '\0');
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
QByteArray writeTurned(int station, int address, int registers, const QByteArray &hostData, int groups,
                       int group)
{
    const int count = qMax(0, qMin(groups, hostData.size() / group));
    const int size = RegisterData + count * group;
    QByteArray bytes = frame(size, station, WriteMultipleRegisters, address, registers);
    bytes.reserve(size);
    bytes.append(static_cast<char>((static_cast<unsigned>(registers) * 2) & 0xFF));
    const char *from = hostData.constData();
    for (int i = 0; i < count; ++i, from += group) {
        for (int byte = group - 1; byte >= 0; --byte)
            bytes.append(from[byte]);
    }
    return bytes;
}

} // namespace

QByteArray request(int station, FunctionCode function, int address, int value)
{
    return frame(RequestLength, station, function, address, value);
}

QByteArray writeRegisters(int station, int address, int registers, const QByteArray &hostData)
{
    return writeTurned(station, address, registers, hostData, registers, 2);
}

QByteArray writePairs(int station, int address, int registers, const QByteArray &hostData)
{
    return writeTurned(station, address, registers, hostData, registers / 2, 4);
}

} // namespace mbap
