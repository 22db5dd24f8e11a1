// SPDX-License-Identifier: MIT
// A Modbus station without a socket: a request frame goes in, the reply's bytes come out at once. For
// tests, fuzzers and benchmarks that exercise the driver alone. Not locked: one thread at a time.

#pragma once

#include <QtCore/QByteArray>

#include <initializer_list>
#include <map>
#include <vector>

class InMemoryStation
{
public:
    /// Tables of one unit, all zero at first. Bits are one 0 or 1 each.
    struct Unit
    {
        std::vector<quint16> coils, inputs, inputRegisters, holdingRegisters;
    };

    /// Units that answer, each with `tableSize` (1 to 65,536) elements in each of its four tables.
    explicit InMemoryStation(std::initializer_list<int> units, int tableSize = 65536);

    Unit &unit(int id) { return m_units.at(id); }

    /// The reply to one Modbus TCP request: functions 1 to 6 and 16, exception 1 for any other function,
    /// 2 for addresses past a table's end, 3 for a bad quantity, value or byte count. Empty for a broadcast,
    /// which every unit carries out, for a unit that is not here, and for a frame whose header is wrong.
    QByteArray reply(const QByteArray &request);

private:
    std::map<int, Unit> m_units;
};
