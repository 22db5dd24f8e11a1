// SPDX-License-Identifier: MIT
#include "run_merge.h"

#include "../driver/base/arithmetic.h"

namespace modbus_driver {

RunMerge::Effect RunMerge::take(int start, int length)
{
    const qint64 end = qint64(start) + length;
    if (m_open && start < m_end && end <= m_end)
        return Unchanged;
    const bool extends = m_open && end - m_start <= m_limit;
    if (!extends)
        m_start = start & ~qint64(m_unit - 1);
    m_end = m_start + ceilDiv(end - m_start, m_unit) * m_unit;
    m_open = true;
    return extends ? Extended : Started;
}

int RunMerge::start() const
{
    return saturated(m_start);
}

int RunMerge::length() const
{
    return saturated((m_end - m_start) / m_unit);
}

} // namespace modbus_driver
