// SPDX-License-Identifier: MIT
#include "unit_switch.h"

bool UnitSwitch::gaveUp(int unit, qint64 nowMs)
{
    Record &record = m_units[unit];
    ++record.failures;
    if (m_offAfter < 1 || record.failures < m_offAfter)
        return false;
    record.retryAtMs = nowMs + m_retryMs;
    return true;
}

QList<int> UnitSwitch::due(qint64 nowMs)
{
    QList<int> units;
    for (auto &[unit, record] : m_units) {
        if (record.retryAtMs < 0 || nowMs < record.retryAtMs)
            continue;
        record.retryAtMs = -1; // its failures still count: the next one switches it off again
        units << unit;
    }
    return units;
}
