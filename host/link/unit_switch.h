// SPDX-License-Identifier: MIT
/// \file
/// Switches units off that do not answer. A unit that left so many requests in a row unanswered is off for a while, so
/// that its time-outs do not slow the others; then one request tries it again. Pure: time goes in.

#pragma once

#include <QtCore/QList>
#include <QtCore/QtGlobal>

#include <map>

class UnitSwitch
{
public:
    /// `offAfter` below 1: never.
    UnitSwitch(int offAfter, qint64 retryMs) : m_offAfter(offAfter), m_retryMs(retryMs) {}

    /// A request was given up. True when the unit must be switched off now.
    bool gaveUp(int unit, qint64 nowMs);
    void answered(int unit) { m_units.erase(unit); }
    /// The units that must be switched on again now.
    QList<int> due(qint64 nowMs);

private:
    struct Record
    {
        int failures = 0;
        qint64 retryAtMs = -1; ///< -1: it is on
    };

    int m_offAfter;
    qint64 m_retryMs;
    std::map<int, Record> m_units;
};
