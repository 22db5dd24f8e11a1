// SPDX-License-Identifier: MIT
#include "modbus_frames.h"

#include "../driver/base/modbus_wire.h"

namespace wire = modbus_driver::wire;
using wire::byteAt;
using wire::wordAt;

namespace {
// A request of function 23 has the address and quantity of its read at AddressAt and ValueAt, and those of
// its write at these positions.
const int writeAddressAt = 12;
const int writeQuantityAt = 14;
const int writeByteCountAt = 16;

// The number of bytes that the frame must have; -1 for a function that is not served.
int requestLength(const QByteArray &frame)
{
    switch (byteAt(frame, wire::FunctionAt)) {
    case wire::ReadCoils:
    case wire::ReadDiscreteInputs:
    case wire::ReadHoldingRegisters:
    case wire::ReadInputRegisters:
    case wire::WriteSingleCoil:
    case wire::WriteSingleRegister:
        return wire::RequestLength;
    case wire::WriteMultipleCoils:
    case wire::WriteMultipleRegisters:
        return wire::WriteDataAt + byteAt(frame, wire::WriteByteCountAt);
    case wire::MaskWriteRegister:
        return wire::RequestLength + 2;
    case wire::ReadWriteMultipleRegisters:
        return writeByteCountAt + 1 + byteAt(frame, writeByteCountAt);
    default:
        return -1;
    }
}

// The exception for a frame of the wrong function or length; 0 when both are right.
int structuralException(const QByteArray &frame)
{
    const int length = requestLength(frame);
    if (length < 0)
        return QModbusPdu::IllegalFunction;
    return frame.size() == length ? 0 : QModbusPdu::IllegalDataValue;
}

QByteArray reply(const QByteArray &request, int function, const QByteArray &data)
{
    QByteArray frame = request.left(wire::HeaderLength);
    wire::putWord(frame.data() + wire::LengthAt, data.size() + 2);
    return frame.append(static_cast<char>(function)).append(data);
}
} // namespace

int modbus::frameSize(const QByteArray &stream)
{
    if (wordAt(stream, wire::ProtocolAt) != 0)
        return -1;
    if (stream.size() < wire::LengthFieldEnd)
        return 0;
    const int length = wordAt(stream, wire::LengthAt);
    if (length < wire::ShortestLengthField || length > wire::LongestLengthField)
        return -1;
    return stream.size() < wire::LengthFieldEnd + length ? 0 : wire::LengthFieldEnd + length;
}

RequestFacts modbus::facts(const QByteArray &frame)
{
    RequestFacts facts;
    facts.unit = byteAt(frame, wire::UnitAt);
    facts.function = byteAt(frame, wire::FunctionAt);
    if (structuralException(frame) != 0)
        return facts;
    const bool readsAndWrites = facts.function == wire::ReadWriteMultipleRegisters;
    const bool single = facts.function == wire::WriteSingleCoil ||
                        facts.function == wire::WriteSingleRegister ||
                        facts.function == wire::MaskWriteRegister;
    facts.address = wordAt(frame, readsAndWrites ? writeAddressAt : +wire::AddressAt);
    facts.count = single ? 1 : wordAt(frame, readsAndWrites ? writeQuantityAt : +wire::ValueAt);
    return facts;
}

QByteArray modbus::carryOut(SimulatedUnit &unit, const QByteArray &frame)
{
    const int exception = structuralException(frame);
    if (exception != 0)
        return exceptionReply(frame, exception);
    const QModbusRequest request(QModbusPdu::FunctionCode(byteAt(frame, wire::FunctionAt)),
                                 frame.mid(wire::AddressAt));
    const QModbusResponse response = unit.processRequest(request);
    return reply(frame, response.functionCode() | (response.isException() ? wire::ExceptionFlag : 0),
                 response.data());
}

QByteArray modbus::exceptionReply(const QByteArray &request, int code)
{
    return reply(request, byteAt(request, wire::FunctionAt) | wire::ExceptionFlag,
                 QByteArray(1, static_cast<char>(code)));
}

QByteArray modbus::request(int unit, int function, int address, int count)
{
    QByteArray frame(wire::RequestLength, '\0');
    wire::putWord(frame.data() + wire::LengthAt, wire::RequestLength - wire::LengthFieldEnd);
    frame[wire::UnitAt] = static_cast<char>(unit);
    frame[wire::FunctionAt] = static_cast<char>(function);
    wire::putWord(frame.data() + wire::AddressAt, address);
    wire::putWord(frame.data() + wire::ValueAt, count);
    return frame;
}
