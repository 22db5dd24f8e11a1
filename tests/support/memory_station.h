// SPDX-License-Identifier: MIT
// A Modbus station without a socket, for requests as the driver builds them. Not locked: one thread at a
// time.

#pragma once

#include "api/codes.h"
#include "base/modbus_wire.h"

#include <vector>

/// Bits and registers of several units. Areas are those of the driver; 32-bit values are two registers. Units
/// and addresses are taken modulo Units and Addresses.
class Tables
{
public:
    enum { Units = 4, Addresses = 128 };

    int at(int unit, int area, int address) const
    {
        const int element = m_values[unit % Units][tableOf(area)][address / scaleOf(area) % Addresses];
        return modbus_driver::isBitOfRegister(area) ? element >> address % 16 & 1 : element;
    }

    void put(int unit, int area, int address, int value)
    {
        int &element = m_values[unit % Units][tableOf(area)][address / scaleOf(area) % Addresses];
        const int bit = address % 16;
        element = modbus_driver::isBitOfRegister(area) ? (element & ~(1 << bit)) | value << bit : value;
    }

private:
    static int scaleOf(int area) { return modbus_driver::isBitOfRegister(area) ? 16 : 1; }
    static int tableOf(int area) { return area < 2 ? area : 2 + area % 2; }

    int m_values[Units][4][Addresses] = {};
};

/// The fields of a request.
struct Asked
{
    explicit Asked(const QByteArray &frame)
    {
        using namespace modbus_driver::wire;
        const int function = byteAt(frame, FunctionAt), value = wordAt(frame, ValueAt);
        const int areaOfFunction[] = {-1, 0, 1, 5, 4, 0, 5};
        unit = byteAt(frame, UnitAt);
        area = areaOfFunction[qMin(function, int(WriteSingleRegister))];
        first = wordAt(frame, AddressAt);
        reads = function <= ReadInputRegisters;
        const bool several = function == WriteMultipleRegisters;
        count = reads || several ? value : 1;
        for (int k = 0; k < count && !reads; ++k)
            written.push_back(several ? wordAt(frame, WriteDataAt + 2 * k) : area == 0 ? value != 0 : value);
    }

    int unit, area, first, count;
    bool reads;
    std::vector<int> written;
};

/// Element k of the data of a reply to a read.
inline int valueIn(const QByteArray &reply, int area, int k)
{
    using namespace modbus_driver::wire;
    return modbus_driver::isBitArea(area) ? byteAt(reply, ReadDataAt + k / 8) >> k % 8 & 1 : wordAt(reply, ReadDataAt + 2 * k);
}

class MemoryStation : public Tables
{
public:
    /// Carries out the request and returns the reply.
    QByteArray reply(const QByteArray &request)
    {
        using namespace modbus_driver;
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
};
