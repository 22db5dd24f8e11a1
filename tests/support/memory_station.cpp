// SPDX-License-Identifier: MIT
#include "memory_station.h"

#include "api/codes.h"
#include "base/modbus_wire.h"

using namespace modbus_driver;

namespace {

int areaOf(int function)
{
    switch (function) {
    case wire::ReadCoils:
    case wire::WriteSingleCoil:
        return AreaCoils;
    case wire::ReadDiscreteInputs:
        return AreaDiscreteInputs;
    case wire::ReadInputRegisters:
        return AreaInputRegisters;
    default:
        return AreaHoldingRegisters;
    }
}

quint16 &at(MemoryStation::Table *table, int address)
{
    return (*table)[static_cast<std::size_t>(address % MemoryStation::TableSize)];
}

QByteArray read(MemoryStation::Table *table, int area, int address, int count)
{
    QByteArray data(isBitArea(area) ? (count + 7) / 8 : 2 * count, '\0');
    for (int i = 0; i < count; ++i) {
        if (isBitArea(area))
            data[i / 8] = static_cast<char>(data.at(i / 8) | at(table, address + i) << i % 8);
        else
            wire::putWord(data.data() + 2 * i, at(table, address + i));
    }
    return data.prepend(static_cast<char>(data.size()));
}

/// Returns what the echo has behind the function code.
QByteArray write(MemoryStation::Table *table, const QByteArray &request)
{
    const int address = wire::wordAt(request, wire::AddressAt), value = wire::wordAt(request, wire::ValueAt);
    const int function = wire::byteAt(request, wire::FunctionAt);
    if (function == wire::WriteMultipleRegisters) {
        for (int k = 0; k < value; ++k)
            at(table, address + k) = static_cast<quint16>(wire::wordAt(request, wire::WriteDataAt + 2 * k));
    } else {
        at(table, address) = static_cast<quint16>(function == wire::WriteSingleCoil ? value != 0 : value);
    }
    return request.mid(wire::AddressAt, 4);
}

} // namespace

MemoryStation::Table &MemoryStation::table(int unit, int area)
{
    Table &table = m_units[unit][area];
    table.resize(TableSize);
    return table;
}

QByteArray MemoryStation::reply(const QByteArray &request)
{
    const int function = wire::byteAt(request, wire::FunctionAt), area = areaOf(function);
    const int unit = wire::byteAt(request, wire::UnitAt);
    if (unit == StationBroadcast) {
        for (auto &each : m_units)
            write(&table(each.first, area), request);
        return QByteArray();
    }
    Table *const asked = &table(unit, area);
    const bool reads = function <= wire::ReadInputRegisters;
    const QByteArray rest = reads
                                ? read(asked, area, wire::wordAt(request, wire::AddressAt), wire::wordAt(request, wire::ValueAt))
                                : write(asked, request);
    QByteArray reply = request.left(wire::AddressAt) + rest;
    wire::putWord(reply.data() + wire::LengthAt, reply.size() - wire::LengthFieldEnd);
    return reply;
}
