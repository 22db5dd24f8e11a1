// SPDX-License-Identifier: MIT
#include "in_memory_station.h"

#include "../driver/api/codes.h"
#include "../driver/base/modbus_wire.h"

namespace wire = modbus_driver::wire;
using wire::byteAt;
using wire::wordAt;

namespace {

typedef std::vector<quint16> Table;

enum Exception { IllegalFunction = 1, IllegalAddress = 2, IllegalValue = 3 };
enum { LongestBitRead = 2000, LongestRegisterRead = 125, LongestRegisterWrite = 123 };

void append(QByteArray *bytes, int value)
{
    char word[2];
    wire::putWord(word, value);
    bytes->append(word, sizeof word);
}

// Each function below returns a reply from its function code on.
QByteArray exceptionReply(int function, Exception exception)
{
    return QByteArray(1, static_cast<char>(function | wire::ExceptionFlag))
        .append(static_cast<char>(exception));
}

// What a write repeats of its request: function code, address, value or quantity.
QByteArray echoOf(const QByteArray &request)
{
    return request.mid(wire::FunctionAt, wire::WriteEchoLength - wire::FunctionAt);
}

bool contains(const Table &table, int address, int count)
{
    return static_cast<std::size_t>(address) + static_cast<std::size_t>(count) <= table.size();
}

QByteArray readBits(int function, const Table &table, int address, int count)
{
    if (count < 1 || count > LongestBitRead)
        return exceptionReply(function, IllegalValue);
    if (!contains(table, address, count))
        return exceptionReply(function, IllegalAddress);
    QByteArray data((count + 7) / 8, '\0');
    const auto first = table.begin() + address;
    for (int i = 0; i < count; ++i)
        data[i / 8] = static_cast<char>(data.at(i / 8) | first[i] << i % 8);
    return QByteArray(1, static_cast<char>(function)).append(static_cast<char>(data.size())).append(data);
}

QByteArray readRegisters(int function, const Table &table, int address, int count)
{
    if (count < 1 || count > LongestRegisterRead)
        return exceptionReply(function, IllegalValue);
    if (!contains(table, address, count))
        return exceptionReply(function, IllegalAddress);
    QByteArray reply(1, static_cast<char>(function));
    reply.append(static_cast<char>(2 * count));
    const auto first = table.begin() + address;
    for (int k = 0; k < count; ++k)
        append(&reply, first[k]);
    return reply;
}

/// Coils take 0xFF00 and 0, registers anything.
QByteArray writeOne(const QByteArray &request, Table *table, bool isCoil)
{
    const int function = byteAt(request, wire::FunctionAt);
    const int address = wordAt(request, wire::AddressAt);
    const int value = wordAt(request, wire::ValueAt);
    if (isCoil && value != wire::CoilOn && value != 0)
        return exceptionReply(function, IllegalValue);
    if (!contains(*table, address, 1))
        return exceptionReply(function, IllegalAddress);
    (*table)[static_cast<std::size_t>(address)] = static_cast<quint16>(isCoil ? value != 0 : value);
    return echoOf(request);
}

QByteArray writeMany(const QByteArray &request, Table *table)
{
    const int function = byteAt(request, wire::FunctionAt);
    const int address = wordAt(request, wire::AddressAt);
    const int count = wordAt(request, wire::ValueAt);
    if (count < 1 || count > LongestRegisterWrite || request.size() != wire::WriteDataAt + 2 * count ||
        byteAt(request, wire::WriteByteCountAt) != 2 * count)
        return exceptionReply(function, IllegalValue);
    if (!contains(*table, address, count))
        return exceptionReply(function, IllegalAddress);
    const auto first = table->begin() + address;
    for (int k = 0; k < count; ++k)
        first[k] = static_cast<quint16>(wordAt(request, wire::WriteDataAt + 2 * k));
    return echoOf(request);
}

QByteArray carryOut(InMemoryStation::Unit *unit, const QByteArray &request)
{
    const int function = byteAt(request, wire::FunctionAt);
    const int address = wordAt(request, wire::AddressAt);
    const int count = wordAt(request, wire::ValueAt);
    switch (function) {
    case wire::ReadCoils:
        return readBits(function, unit->coils, address, count);
    case wire::ReadDiscreteInputs:
        return readBits(function, unit->inputs, address, count);
    case wire::ReadHoldingRegisters:
        return readRegisters(function, unit->holdingRegisters, address, count);
    case wire::ReadInputRegisters:
        return readRegisters(function, unit->inputRegisters, address, count);
    case wire::WriteSingleCoil:
        return writeOne(request, &unit->coils, true);
    case wire::WriteSingleRegister:
        return writeOne(request, &unit->holdingRegisters, false);
    case wire::WriteMultipleRegisters:
        return writeMany(request, &unit->holdingRegisters);
    default:
        return exceptionReply(function, IllegalFunction);
    }
}

} // namespace

InMemoryStation::InMemoryStation(std::initializer_list<int> units, int tableSize)
{
    const Table zeros(static_cast<std::size_t>(tableSize));
    for (int id : units)
        m_units[id] = Unit{zeros, zeros, zeros, zeros};
}

QByteArray InMemoryStation::reply(const QByteArray &request)
{
    if (request.size() < wire::RequestLength || wordAt(request, wire::ProtocolAt) != 0 ||
        wordAt(request, wire::LengthAt) != request.size() - wire::LengthFieldEnd)
        return QByteArray();
    const int id = byteAt(request, wire::UnitAt);
    if (id == modbus_driver::StationBroadcast) {
        for (auto &unit : m_units)
            carryOut(&unit.second, request);
        return QByteArray();
    }
    const auto unit = m_units.find(id);
    if (unit == m_units.end())
        return QByteArray();
    const QByteArray answer = carryOut(&unit->second, request);
    QByteArray reply = request.left(wire::LengthAt);
    append(&reply, answer.size() + 1);
    return reply.append(request.at(wire::UnitAt)).append(answer);
}
