// SPDX-License-Identifier: MIT
#include "changing_values.h"

#include <cmath>
#include <cstring>

namespace {
using Values = QVector<quint16>;

const quint32 stepsPerPeriod = 100;
const double twoPi = 6.283185307179586;

Values highRegisterFirst(quint32 value)
{
    return {static_cast<quint16>(value >> 16), static_cast<quint16>(value)};
}

double sineAt(quint32 step)
{
    return std::sin(twoPi * (step % stepsPerPeriod) / stepsPerPeriod);
}

Values counter(int, quint32 step)
{
    return {static_cast<quint16>(step)};
}
Values sine(int, quint32 step)
{
    return {static_cast<quint16>(std::lround(1000 * sineAt(step)))};
}
Values ramp(int, quint32 step)
{
    return {static_cast<quint16>(step % stepsPerPeriod * 10)};
}
Values walkingBit(int, quint32 step)
{
    return {static_cast<quint16>(1 << step % 16)};
}
Values longCounter(int, quint32 step)
{
    return highRegisterFirst(1000000 + 1000 * step);
}
Values counterBit(int address, quint32 step)
{
    return {static_cast<quint16>(step >> address & 1)};
}

Values floatSine(int, quint32 step)
{
    const float value = static_cast<float>(100 * sineAt(step));
    quint32 bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return highRegisterFirst(bits);
}
} // namespace

ChangingValues::ChangingValues(SimulatedUnit &unit) : m_unit(unit)
{
    for (const auto table : {QModbusDataUnit::HoldingRegisters, QModbusDataUnit::InputRegisters}) {
        m_points << Point{table, 0, counter, {}} << Point{table, 1, sine, {}} << Point{table, 2, ramp, {}}
                 << Point{table, 3, walkingBit, {}} << Point{table, 4, longCounter, {}}
                 << Point{table, 6, floatSine, {}};
    }
    for (const auto table : {QModbusDataUnit::Coils, QModbusDataUnit::DiscreteInputs}) {
        for (int address = 0; address < 8; ++address)
            m_points << Point{table, address, counterBit, {}};
    }
    for (Point &point : m_points)
        write(point);
}

void ChangingValues::step()
{
    ++m_step;
    for (Point &point : m_points) {
        for (int i = 0; i < point.lastValues.size(); ++i) {
            if (m_unit.at(point.table, point.address + i) != point.lastValues.at(i))
                point.lastValues.clear();
        }
        if (!point.lastValues.isEmpty())
            write(point);
    }
}

void ChangingValues::write(Point &point)
{
    point.lastValues = point.valuesAt(point.address, m_step);
    for (int i = 0; i < point.lastValues.size(); ++i)
        m_unit.set(point.table, point.address + i, point.lastValues.at(i));
}
