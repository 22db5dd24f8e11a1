// SPDX-License-Identifier: MIT
#include "simulated_unit.h"

namespace {
template <typename Rule> QModbusDataUnit table(SimulatedUnit::Table type, Rule rule)
{
    QVector<quint16> values(SimulatedUnit::tableSize);
    for (int address = 0; address < values.size(); ++address)
        values[address] = static_cast<quint16>(rule(address));
    return QModbusDataUnit(type, 0, values);
}

// All units share this data (copy on write), so 255 units need little memory.
const QModbusDataUnitMap &initialTables()
{
    static const QModbusDataUnitMap tables = {
        {QModbusDataUnit::Coils, table(QModbusDataUnit::Coils, [](int a) { return a % 3 == 0; })},
        {QModbusDataUnit::DiscreteInputs,
         table(QModbusDataUnit::DiscreteInputs, [](int a) { return a % 5 == 0; })},
        {QModbusDataUnit::InputRegisters,
         table(QModbusDataUnit::InputRegisters, [](int a) { return 10000 + a; })},
        {QModbusDataUnit::HoldingRegisters,
         table(QModbusDataUnit::HoldingRegisters, [](int a) { return a; })},
    };
    return tables;
}
} // namespace

SimulatedUnit::SimulatedUnit(int id, QObject *parent) : QModbusServer(parent)
{
    setServerAddress(id);
    setMap(initialTables());
    connectDevice();
}

quint16 SimulatedUnit::at(Table table, int address) const
{
    quint16 value = 0;
    if (address >= 0 && address < tableSize)
        data(table, static_cast<quint16>(address), &value);
    return value;
}

bool SimulatedUnit::set(Table table, int address, quint16 value)
{
    if (address < 0 || address >= tableSize)
        return false;
    return setData(table, static_cast<quint16>(address), value);
}

/// Function 5 writes a coil as 0xFF00.
bool SimulatedUnit::writeData(const QModbusDataUnit &unit)
{
    QModbusDataUnit kept = unit;
    const bool isBits = unit.registerType() == QModbusDataUnit::Coils ||
                        unit.registerType() == QModbusDataUnit::DiscreteInputs;
    for (int i = 0; isBits && i < static_cast<int>(unit.valueCount()); ++i)
        kept.setValue(i, unit.value(i) != 0);
    if (!QModbusServer::writeData(kept))
        return false;
    if (m_servesMaster)
        emit written(kept);
    return true;
}

bool SimulatedUnit::open()
{
    setState(ConnectedState);
    return true;
}

void SimulatedUnit::close()
{
    setState(UnconnectedState);
}
