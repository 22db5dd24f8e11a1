// SPDX-License-Identifier: MIT
#include "memory_station.h"

#include "api/codes.h"
#include "base/modbus_wire.h"

using namespace modbus_driver;

namespace {

const int tableOf[] = {0, 1, 4, 5, 4, 5, 4, 5};
const int areaOfFunction[] = {-1, AreaCoils, AreaDiscreteInputs, AreaHoldingRegisters, AreaInputRegisters, AreaCoils};

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
    const bool several = function == wire::WriteMultipleRegisters;
    count = reads || several ? value : 1;
    for (int k = 0; k < count && !reads; ++k)
        written.push_back(several ? wire::wordAt(frame, wire::WriteDataAt + 2 * k) : isBitArea(area) ? value != 0 : value);
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
    for (std::size_t k = 0; k < asked.written.size(); ++k)
        put(asked.unit, asked.area, asked.first + int(k), asked.written[k]);
    if (!asked.reads)
        return request.left(wire::WriteEchoLength);
    QByteArray data(isBitArea(asked.area) ? (asked.count + 7) / 8 : 2 * asked.count, '\0');
    for (int k = 0; k < asked.count; ++k) {
        const int value = at(asked.unit, asked.area, asked.first + k);
        if (isBitArea(asked.area))
            data[k / 8] = static_cast<char>(data.at(k / 8) | value << k % 8);
        else
            wire::putWord(data.data() + 2 * k, value);
    }
    return request.left(wire::ReadByteCountAt) + static_cast<char>(data.size()) + data;
}
