// SPDX-License-Identifier: MIT
#include "link_state.h"

LinkState::State LinkState::at(qint64 nowMs)
{
    if (m_state == BackingOff && nowMs >= m_retryAtMs)
        m_state = Connecting;
    return m_state;
}

void LinkState::opened(qint64 nowMs)
{
    m_state = Up;
    m_hasAnswered = false;
    m_openedAtMs = nowMs;
}

void LinkState::sent()
{
    m_state = Waiting;
}

void LinkState::answered(qint64 nowMs)
{
    m_state = Up;
    m_hasAnswered = true;
    if (nowMs - m_openedAtMs < m_times.provenMs)
        return;
    m_delayMs = m_times.firstMs;
    m_hasFreeReopening = true;
}

void LinkState::keptUp()
{
    m_state = Up;
}

void LinkState::lost(LinkCause cause, qint64 nowMs)
{
    m_cause = cause;
    const bool tookTimeOut = cause == LinkCause::Silent || cause == LinkCause::CutOff;
    if (m_state == Connecting)
        return backOffLonger(nowMs);
    if (m_hasFreeReopening) {
        m_hasFreeReopening = false;
        m_state = Connecting;
        return;
    }
    if (tookTimeOut || m_hasAnswered)
        return backOff(m_openedAtMs + m_times.floorMs);
    backOffLonger(nowMs);
}

void LinkState::backOff(qint64 untilMs)
{
    m_state = BackingOff;
    m_retryAtMs = untilMs;
}

void LinkState::backOffLonger(qint64 nowMs)
{
    backOff(nowMs + m_delayMs);
    m_delayMs = qMin(2 * m_delayMs, m_times.longestMs);
}
