// SPDX-License-Identifier: MIT
#include "remote_peer.h"

#include <QtCore/QtEndian>

#include <numeric>

namespace {
const int fieldsSize = 21;           // up to the value bytes
const int readSize = fieldsSize + 1; // with the byte sum
enum Access { Read = 0, Write = 1 };
enum Area { Coils = 0, DiscreteInputs = 1, HoldingBits = 3, HoldingRegisters = 5, HoldingPairs = 7 };

int byteAt(const QByteArray &frame, int index)
{
    return static_cast<quint8>(frame.at(index));
}

int wordAt(const QByteArray &frame, int index)
{
    return qFromBigEndian<quint16>(frame.constData() + index);
}

int areaOf(const QByteArray &frame)
{
    return wordAt(frame, 5);
}
int startOf(const QByteArray &frame)
{
    return qFromBigEndian<qint32>(frame.constData() + 7);
}
int lengthOf(const QByteArray &frame)
{
    return wordAt(frame, 11);
}

// Value bytes that a write of this area and length carries; -1 for an area that is not written.
int valueSize(const QByteArray &frame)
{
    switch (areaOf(frame)) {
    case Coils:
    case HoldingBits:
        return lengthOf(frame);
    case HoldingRegisters:
    case HoldingPairs:
        return 2 * lengthOf(frame);
    default:
        return -1;
    }
}

int writeSize(const QByteArray &stream)
{
    const int announced = byteAt(stream, 0);
    const int expected = readSize + valueSize(stream);
    if (expected >= readSize && expected % 256 == announced)
        return expected;
    return announced < readSize ? announced + 256 : announced;
}

char byteSum(const QByteArray &bytes)
{
    return static_cast<char>(std::accumulate(bytes.begin(), bytes.end(), 0u));
}

// Whether the table has `count` (more than 0) entries from `first` on.
bool inTable(qint64 first, qint64 count)
{
    return first >= 0 && count > 0 && first + count <= SimulatedUnit::tableSize;
}

QByteArray replyHeader(const QByteArray &frame, int replySize)
{
    return QByteArray(1, static_cast<char>(replySize)) + frame.mid(1, 6) + frame.mid(9, 2);
}

QByteArray readBits(const SimulatedUnit &unit, const QByteArray &frame)
{
    const int first = startOf(frame);
    const int bits = lengthOf(frame) * 8;
    if ((areaOf(frame) != Coils && areaOf(frame) != DiscreteInputs) || !inTable(first, bits))
        return QByteArray();
    const auto table = areaOf(frame) == Coils ? QModbusDataUnit::Coils : QModbusDataUnit::DiscreteInputs;
    QByteArray data(lengthOf(frame), '\0');
    for (int bit = 0; bit < bits; ++bit) {
        if (unit.at(table, first + bit) != 0)
            data[bit / 8] = static_cast<char>(data.at(bit / 8) | 1 << bit % 8);
    }
    return replyHeader(frame, 9 + data.size()) + data;
}

void setHoldingBit(SimulatedUnit &unit, int bitAddress, bool on)
{
    const int mask = 1 << bitAddress % 16;
    const int old = unit.at(QModbusDataUnit::HoldingRegisters, bitAddress / 16);
    unit.set(QModbusDataUnit::HoldingRegisters, bitAddress / 16,
             static_cast<quint16>(on ? old | mask : old & ~mask));
}

void setRegister(SimulatedUnit &unit, int address, const char *lowByteFirst)
{
    unit.set(QModbusDataUnit::HoldingRegisters, address, qFromLittleEndian<quint16>(lowByteFirst));
}

// Whether the value bytes, the length and the tables allow the whole write.
bool isWritable(const QByteArray &frame)
{
    const int length = lengthOf(frame);
    if (frame.size() != readSize + valueSize(frame))
        return false;
    if (areaOf(frame) == HoldingPairs && length % 2 != 0)
        return false;
    if (areaOf(frame) != HoldingBits)
        return inTable(startOf(frame), length);
    const qint64 lastBit = qint64(startOf(frame)) + length - 1;
    return length > 0 && startOf(frame) >= 0 && lastBit / 16 < SimulatedUnit::tableSize;
}

QByteArray write(SimulatedUnit &unit, const QByteArray &frame)
{
    if (!isWritable(frame))
        return QByteArray();
    const char *value = frame.constData() + fieldsSize;
    for (int i = 0; i < lengthOf(frame); ++i) {
        const int address = startOf(frame) + i;
        switch (areaOf(frame)) {
        case Coils:
            unit.set(QModbusDataUnit::Coils, address, value[i] == 1);
            break;
        case HoldingBits:
            setHoldingBit(unit, address, value[i] == 1);
            break;
        case HoldingRegisters:
            setRegister(unit, address, value + 2 * i);
            break;
        case HoldingPairs:
            setRegister(unit, address, value + 2 * (i ^ 1));
            break;
        }
    }
    const QByteArray reply = replyHeader(frame, 12) + frame.mid(11, 2);
    return reply + byteSum(reply);
}
} // namespace

int remote::frameSize(const QByteArray &stream)
{
    if (stream.size() > 2 && byteAt(stream, 2) > Write)
        return -1;
    if (stream.size() < readSize)
        return 0;
    const bool isRead = byteAt(stream, 2) == Read;
    if (isRead && byteAt(stream, 0) != readSize)
        return -1;
    const int size = isRead ? readSize : writeSize(stream);
    if (stream.size() < size)
        return 0;
    return byteSum(stream.left(size - 1)) == stream.at(size - 1) ? size : -1;
}

RequestFacts remote::facts(const QByteArray &frame)
{
    RequestFacts facts;
    facts.unit = byteAt(frame, 4);
    facts.function = byteAt(frame, 2);
    facts.address = startOf(frame);
    facts.count = facts.function == Read ? lengthOf(frame) * 8 : lengthOf(frame);
    return facts;
}

QByteArray remote::carryOut(SimulatedUnit &unit, const QByteArray &frame)
{
    return byteAt(frame, 2) == Read ? readBits(unit, frame) : write(unit, frame);
}
