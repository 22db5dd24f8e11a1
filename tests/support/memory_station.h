// SPDX-License-Identifier: MIT
// A Modbus station without a socket, for requests as the driver builds them. Not locked: one thread at a
// time.

#pragma once

#include <QtCore/QByteArray>

#include <vector>

/// Bits and registers of several units. Areas are those of the driver; 32-bit values are two registers. Units
/// and addresses are taken modulo Units and Addresses.
class Tables
{
public:
    enum { Units = 4, Addresses = 128 };

    int at(int unit, int area, int address) const;
    void put(int unit, int area, int address, int value);

private:
    int m_values[Units][8][Addresses] = {}; ///< of areas 0, 1, 4 and 5
};

/// The fields of a request.
struct Asked
{
    explicit Asked(const QByteArray &frame);

    int unit, area, first, count;
    bool reads;
    std::vector<int> written;
};

/// Element k of the data of a reply to a read.
int valueIn(const QByteArray &reply, int area, int k);

class MemoryStation : public Tables
{
public:
    /// Carries out the request and returns the reply.
    QByteArray reply(const QByteArray &request);
};
