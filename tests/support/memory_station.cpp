// SPDX-License-Identifier: MIT
#include "memory_station.h"

#include "api/codes.h"
#include "base/modbus_wire.h"

using namespace modbus_driver;

namespace {

const int tableOf[] = {AreaCoils,          AreaDiscreteInputs,   AreaInputRegisters, AreaHoldingRegisters,
                       AreaInputRegisters, AreaHoldingRegisters, AreaInputRegisters, AreaHoldingRegisters};
const int areaOfFunction[] = {0, AreaCoils, AreaDiscreteInputs, AreaHoldingRegisters, AreaInputRegisters, AreaCoils};

} // namespace

int Tables::at(int unit, int area, int address) const
{
    const int *const table = m_values[unit % Units][tableOf[area]];
    return isBitOfRegister(area) ? table[address / 16 % Addresses] >> address % 16 & 1 : table[address % Addresses];
}

void Tables::put(int unit, int area, int address, int value)
{
    int &element = m_values[unit % Units][tableOf[area]][(isBitOfRegister(area) ? address / 16 : address) % Addresses];
    element = isBitOfRegister(area) ? (element & ~(1 << address % 16)) | value << address % 16 : value;
}

Asked::Asked(const QByteArray &frame)
{
    const int function = wire::byteAt(frame, wire::FunctionAt), value = wire::wordAt(frame, wire::ValueAt);
    unit = wire::byteAt(frame, wire::UnitAt);
    area = function < wire::WriteSingleRegister ? areaOfFunction[function] : int(AreaHoldingRegisters);
    first = wire::wordAt(frame, wire::AddressAt);
    reads = function <= wire::ReadInputRegisters;
    count = reads || function == wire::WriteMultipleRegisters ? value : 1;
    for (int k = 0; k < count && !reads; ++k)
        written.push_back(function == wire::WriteSingleCoil       ? value != 0
                          : function == wire::WriteSingleRegister ? value
                                                                  : wire::wordAt(frame, wire::WriteDataAt + 2 * k));
}

int valueIn(const QByteArray &reply, int area, int k)
{
    if (isBitArea(area))
        return wire::byteAt(reply, wire::ReadDataAt + k / 8) >> k % 8 & 1;
    return wire::wordAt(reply, wire::ReadDataAt + 2 * k);
}

QByteArray MemoryStation::reply(const QByteArray &request)
{
    const Asked asked(request);
    for (int k = 0; k < asked.count && !asked.reads; ++k)
        put(asked.unit, asked.area, asked.first + k, asked.written[static_cast<std::size_t>(k)]);
    if (!asked.reads)
        return request.left(wire::WriteEchoLength);
    const int size = isBitArea(asked.area) ? (asked.count + 7) / 8 : 2 * asked.count;
    QByteArray reply = request.left(wire::ReadByteCountAt) + static_cast<char>(size) + QByteArray(size, '\0');
    for (int k = 0; k < asked.count; ++k) {
        char *const data = reply.data() + wire::ReadDataAt;
        const int value = at(asked.unit, asked.area, asked.first + k);
        if (isBitArea(asked.area))
            data[k / 8] = static_cast<char>(data[k / 8] | value << k % 8);
        else
            wire::putWord(data + 2 * k, value);
    }
    return reply;
}
