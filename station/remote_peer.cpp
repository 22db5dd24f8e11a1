// SPDX-License-Identifier: MIT
#include "remote_peer.h"

#include "../driver/api/codes.h"
#include "../driver/base/block_checks.h"
#include "../driver/base/modbus_wire.h"
#include "../driver/base/remote_wire.h"

#include <QtCore/QtEndian>

using namespace modbus_driver;
using remoteWire::ShortestFrame;
using wire::byteAt;
using wire::wordAt;

namespace {
int areaOf(const QByteArray &frame)
{
    return wordAt(frame, remoteWire::AreaAt);
}
int startOf(const QByteArray &frame)
{
    return qFromBigEndian<qint32>(frame.constData() + remoteWire::StartAddressAt);
}
int lengthOf(const QByteArray &frame)
{
    return wordAt(frame, remoteWire::DataLengthAt);
}

// The number of value bytes in a write of this area and length; -1 for an area that cannot be written.
int valueSize(const QByteArray &frame)
{
    switch (areaOf(frame)) {
    case AreaCoils:
    case AreaHoldingRegisterBit:
        return lengthOf(frame);
    case AreaHoldingRegisters:
    case AreaHoldingPairs:
        return 2 * lengthOf(frame);
    default:
        return -1;
    }
}

int writeSize(const QByteArray &stream)
{
    const int announced = byteAt(stream, remoteWire::LengthAt);
    const int expected = ShortestFrame + valueSize(stream);
    if (expected >= ShortestFrame && expected % 256 == announced)
        return expected;
    return announced < ShortestFrame ? announced + 256 : announced;
}

char byteSumOf(const QByteArray &bytes)
{
    return static_cast<char>(byteSum(reinterpret_cast<const unsigned char *>(bytes.constData()),
                                     static_cast<unsigned>(bytes.size())));
}

// True when count is above 0 and the table has all entries from `first` to first + count - 1.
bool inTable(qint64 first, qint64 count)
{
    return first >= 0 && count > 0 && first + count <= SimulatedUnit::tableSize;
}

QByteArray replyHeader(const QByteArray &frame, int replySize)
{
    return QByteArray(1, static_cast<char>(replySize)) + frame.mid(remoteWire::HostIdAt, 6) +
           frame.mid(remoteWire::StartAddressAt + 2, 2);
}

QByteArray readBits(const SimulatedUnit &unit, const QByteArray &frame)
{
    const int first = startOf(frame);
    const int bits = lengthOf(frame) * 8;
    if ((areaOf(frame) != AreaCoils && areaOf(frame) != AreaDiscreteInputs) || !inTable(first, bits))
        return QByteArray();
    const auto table = areaOf(frame) == AreaCoils ? QModbusDataUnit::Coils : QModbusDataUnit::DiscreteInputs;
    QByteArray data(lengthOf(frame), '\0');
    for (int bit = 0; bit < bits; ++bit) {
        if (unit.at(table, first + bit) != 0)
            data[bit / 8] = static_cast<char>(data.at(bit / 8) | 1 << bit % 8);
    }
    return replyHeader(frame, remoteWire::ReadReplyHeader + data.size()) + data;
}

void setHoldingBit(SimulatedUnit &unit, int bitAddress, bool on)
{
    const int mask = 1 << bitAddress % BitsOfRegister;
    const int old = unit.at(QModbusDataUnit::HoldingRegisters, bitAddress / BitsOfRegister);
    unit.set(QModbusDataUnit::HoldingRegisters, bitAddress / BitsOfRegister,
             static_cast<quint16>(on ? old | mask : old & ~mask));
}

void setRegister(SimulatedUnit &unit, int address, const char *lowByteFirst)
{
    unit.set(QModbusDataUnit::HoldingRegisters, address, qFromLittleEndian<quint16>(lowByteFirst));
}

// True when the frame has the right number of value bytes and the table has all addresses of the write.
bool isWritable(const QByteArray &frame)
{
    const int length = lengthOf(frame);
    if (frame.size() != ShortestFrame + valueSize(frame))
        return false;
    if (areaOf(frame) == AreaHoldingPairs && length % 2 != 0)
        return false;
    if (areaOf(frame) != AreaHoldingRegisterBit)
        return inTable(startOf(frame), length);
    const qint64 lastBit = qint64(startOf(frame)) + length - 1;
    return length > 0 && startOf(frame) >= 0 && lastBit / BitsOfRegister < SimulatedUnit::tableSize;
}

QByteArray write(SimulatedUnit &unit, const QByteArray &frame)
{
    if (!isWritable(frame))
        return QByteArray();
    const char *value = frame.constData() + remoteWire::ValueAt;
    for (int i = 0; i < lengthOf(frame); ++i) {
        const int address = startOf(frame) + i;
        switch (areaOf(frame)) {
        case AreaCoils:
            unit.set(QModbusDataUnit::Coils, address, value[i] == 1);
            break;
        case AreaHoldingRegisterBit:
            setHoldingBit(unit, address, value[i] == 1);
            break;
        case AreaHoldingRegisters:
            setRegister(unit, address, value + 2 * i);
            break;
        case AreaHoldingPairs:
            setRegister(unit, address, value + 2 * (i ^ 1));
            break;
        }
    }
    const QByteArray reply =
        replyHeader(frame, remoteWire::WriteReplyLength) + frame.mid(remoteWire::DataLengthAt, 2);
    return reply + byteSumOf(reply);
}
} // namespace

int remote::frameSize(const QByteArray &stream)
{
    if (byteAt(stream, remoteWire::AccessAt) > AccessWrite)
        return -1;
    if (stream.size() < ShortestFrame)
        return 0;
    const bool isRead = byteAt(stream, remoteWire::AccessAt) == AccessRead;
    if (isRead && byteAt(stream, remoteWire::LengthAt) != ShortestFrame)
        return -1;
    const int size = isRead ? ShortestFrame : writeSize(stream);
    if (stream.size() < size)
        return 0;
    return byteSumOf(stream.left(size - 1)) == stream.at(size - 1) ? size : -1;
}

RequestFacts remote::facts(const QByteArray &frame)
{
    RequestFacts facts;
    facts.unit = byteAt(frame, remoteWire::StationAt);
    facts.function = byteAt(frame, remoteWire::AccessAt);
    facts.address = startOf(frame);
    facts.count = facts.function == AccessRead ? lengthOf(frame) * 8 : lengthOf(frame);
    return facts;
}

QByteArray remote::carryOut(SimulatedUnit &unit, const QByteArray &frame)
{
    return byteAt(frame, remoteWire::AccessAt) == AccessRead ? readBits(unit, frame) : write(unit, frame);
}
