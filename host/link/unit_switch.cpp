// SPDX-License-Identifier: MIT
#include "unit_switch.h"

bool UnitSwitch::gaveUp(int unit, qint64 nowMs)
{
    Record &record = m_units[unit];
    ++record.failures;
    if (m_offAfter < 1 || record.failures < m_offAfter)
        return false;
    record.isOff = true;
    record.retryAtMs = nowMs + m_retryMs;
    return true;
}

QList<int> UnitSwitch::due(qint64 nowMs)
{
    QList<int> units;
    for (auto &[unit, record] : m_units) {
        if (!record.isOff || nowMs < record.retryAtMs)
            continue;
        record.isOff = false; // its failures still count: the next one switches it off again
        units << unit;
    }
    return units;
}
