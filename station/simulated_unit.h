// SPDX-License-Identifier: MIT
/// \file
/// One unit of the simulated station: four tables of 65,536 entries. Qt's server class executes the Modbus
/// functions on them. Used on the station's thread only.
///
/// At the start holding register a has the value a, and input register a the value 10000 + a (modulo 65,536).
/// Every third coil (0, 3, 6...) and every fifth discrete input (0, 5, 10...) is on. With these values a
/// wrong address or a wrong area is easy to see.

#pragma once

#include <QtSerialBus/QModbusServer>

class SimulatedUnit : public QModbusServer
{
    Q_OBJECT

public:
    using Table = QModbusDataUnit::RegisterType;

    static constexpr int tableSize = 65536;

    explicit SimulatedUnit(int id, QObject *parent = nullptr);

    /// Executes a request PDU and returns the reply PDU, which may be an exception.
    using QModbusServer::processRequest;

    /// The register, or 0 or 1 for a bit; 0 for an address outside the table.
    quint16 at(Table table, int address) const;
    /// Sets a register or a bit (any value except 0 is on). Outside the table it does nothing and returns
    /// false.
    bool set(Table table, int address, quint16 value);

    /// True: the writes from now on come from a master, and written() is emitted. At the start it is false.
    void setServesMaster(bool servesMaster) { m_servesMaster = servesMaster; }

signals:
    /// A master has written values, even when they are the same as before.
    void written(const QModbusDataUnit &values);

protected:
    bool open() override;
    void close() override;
    /// Called for every write. Stores a bit as 0 or 1.
    bool writeData(const QModbusDataUnit &unit) override;

private:
    bool m_servesMaster = false;
};
