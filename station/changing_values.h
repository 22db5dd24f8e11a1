// SPDX-License-Identifier: MIT
/// \file
/// Values of a unit that change by themselves ten times a second, so that a poll shows changes in every area.
/// Used on the station's thread. In the holding registers and in the input registers:
///
///     0    counter, plus 1 each step              4-5  32-bit counter, plus 1000 each step
///     1    sine, -1000 to 1000 in 10 s            6-7  the sine as IEEE 754 single, -100 to 100
///     2    ramp, 0 to 990 in 10 s                      (pairs: high register first)
///     3    one bit walking from bit 0 to bit 15
///
/// Coils and discrete inputs 0 to 7 are the low bits of the counter: number n toggles every 2^n steps.
/// When a master or a test writes another value, the value does not change by itself any more.

#pragma once

#include "simulated_unit.h"

#include <QtCore/QVector>

class ChangingValues
{
public:
    static constexpr int stepMilliseconds = 100;

    /// Writes the first values into the unit, which must outlive this.
    explicit ChangingValues(SimulatedUnit &unit);

    /// Writes the next values.
    void step();

private:
    struct Point
    {
        SimulatedUnit::Table table;
        int address;
        QVector<quint16> (*valuesAt)(int address, quint32 step);
        QVector<quint16> lastValues; ///< last written by this class; empty after somebody else has written
    };

    void write(Point &point);

    SimulatedUnit &m_unit;
    quint32 m_step = 0;
    QVector<Point> m_points;
};
