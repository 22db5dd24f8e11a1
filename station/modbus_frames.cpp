// SPDX-License-Identifier: MIT
#include "modbus_frames.h"

#include <QtCore/QtEndian>

namespace {
const int headerSize = 7;
const int lengthFieldEnd = 6;
const int shortestLength = 2;  // unit and function
const int longestLength = 254; // unit and the longest PDU

int byteAt(const QByteArray &frame, int index)
{
    return index < frame.size() ? static_cast<quint8>(frame.at(index)) : 0;
}

int wordAt(const QByteArray &frame, int index)
{
    return byteAt(frame, index) << 8 | byteAt(frame, index + 1);
}

// Bytes that the PDU must have; -1 for a function that is not served.
int pduSize(const QByteArray &frame)
{
    switch (byteAt(frame, headerSize)) {
    case QModbusPdu::ReadCoils:
    case QModbusPdu::ReadDiscreteInputs:
    case QModbusPdu::ReadHoldingRegisters:
    case QModbusPdu::ReadInputRegisters:
    case QModbusPdu::WriteSingleCoil:
    case QModbusPdu::WriteSingleRegister:
        return 5;
    case QModbusPdu::WriteMultipleCoils:
    case QModbusPdu::WriteMultipleRegisters:
        return 6 + byteAt(frame, headerSize + 5);
    case QModbusPdu::MaskWriteRegister:
        return 7;
    case QModbusPdu::ReadWriteMultipleRegisters:
        return 10 + byteAt(frame, headerSize + 9);
    default:
        return -1;
    }
}

// What a frame deserves before its content is looked at; 0 for nothing.
int structuralException(const QByteArray &frame)
{
    const int size = pduSize(frame);
    if (size < 0)
        return 1;
    return frame.size() == headerSize + size ? 0 : 3;
}

QByteArray reply(const QByteArray &request, int function, const QByteArray &data)
{
    QByteArray frame = request.left(headerSize);
    qToBigEndian(static_cast<quint16>(data.size() + 2), frame.data() + 4);
    return frame.append(static_cast<char>(function)).append(data);
}
} // namespace

int modbus::frameSize(const QByteArray &stream)
{
    if (wordAt(stream, 2) != 0)
        return -1;
    if (stream.size() < lengthFieldEnd)
        return 0;
    const int length = wordAt(stream, 4);
    if (length < shortestLength || length > longestLength)
        return -1;
    return stream.size() < lengthFieldEnd + length ? 0 : lengthFieldEnd + length;
}

RequestFacts modbus::facts(const QByteArray &frame)
{
    RequestFacts facts;
    facts.unit = byteAt(frame, 6);
    facts.function = byteAt(frame, headerSize);
    if (structuralException(frame) != 0)
        return facts;
    const bool readsAndWrites = facts.function == QModbusPdu::ReadWriteMultipleRegisters;
    const bool single = facts.function == QModbusPdu::WriteSingleCoil ||
                        facts.function == QModbusPdu::WriteSingleRegister ||
                        facts.function == QModbusPdu::MaskWriteRegister;
    facts.address = wordAt(frame, readsAndWrites ? 12 : 8);
    facts.count = single ? 1 : wordAt(frame, readsAndWrites ? 14 : 10);
    return facts;
}

QByteArray modbus::carryOut(SimulatedUnit &unit, const QByteArray &frame)
{
    const int exception = structuralException(frame);
    if (exception != 0)
        return exceptionReply(frame, exception);
    const QModbusRequest request(QModbusPdu::FunctionCode(byteAt(frame, headerSize)),
                                 frame.mid(headerSize + 1));
    const QModbusResponse response = unit.processRequest(request);
    return reply(frame, response.functionCode() | (response.isException() ? QModbusPdu::ExceptionByte : 0),
                 response.data());
}

QByteArray modbus::exceptionReply(const QByteArray &request, int code)
{
    return reply(request, byteAt(request, headerSize) | QModbusPdu::ExceptionByte,
                 QByteArray(1, static_cast<char>(code)));
}
