// SPDX-License-Identifier: MIT
/// \file
/// One unit of the simulated station: four tables of 65,536 entries and the Modbus functions on them, which
/// Qt's server class carries out. Lives, and is called, on the station's thread only.
///
/// At first holding register a holds a, input register a holds 10000 + a (modulo 65,536), every third coil
/// (0, 3, 6...) and every fifth discrete input (0, 5, 10...) is on: an address off by one or a swapped area
/// shows at once.

#pragma once

#include <QtSerialBus/QModbusServer>

class SimulatedUnit : public QModbusServer
{
    Q_OBJECT

public:
    using Table = QModbusDataUnit::RegisterType;

    static constexpr int tableSize = 65536;

    explicit SimulatedUnit(int id, QObject *parent = nullptr);

    /// The reply PDU to a request PDU, exceptions included.
    using QModbusServer::processRequest;

    /// The register, or 0 or 1 for a bit; 0 for an address outside the table.
    quint16 at(Table table, int address) const;
    /// Sets a register or a bit (any value but 0 is on). False, and nothing done, outside the table.
    bool set(Table table, int address, quint16 value);

    /// Whether writes are a master's from now on. At first they are the station's own.
    void setServesMaster(bool servesMaster) { m_servesMaster = servesMaster; }

signals:
    /// A master has written, the same values or others.
    void written(const QModbusDataUnit &values);

protected:
    bool open() override;
    void close() override;
    /// All writes come here. A bit is kept as 0 or 1.
    bool writeData(const QModbusDataUnit &unit) override;

private:
    bool m_servesMaster = false;
};
