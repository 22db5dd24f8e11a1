// SPDX-License-Identifier: MIT
// A Modbus station without a socket, for requests as the driver builds them. Not locked: one thread at a time.

#pragma once

#include <QtCore/QByteArray>

#include <map>
#include <vector>

class MemoryStation
{
public:
    enum { TableSize = 128 };
    /// Of one area (0, 1, 4 or 5) of one unit; a bit is 0 or 1.
    typedef std::vector<quint16> Table;

    Table &table(int unit, int area);

    /// Carries out the request and returns the reply; empty for a broadcast, which every unit carries out.
    /// Addresses count modulo the table's size.
    QByteArray reply(const QByteArray &request);

private:
    std::map<int, std::map<int, Table>> m_units;
};
