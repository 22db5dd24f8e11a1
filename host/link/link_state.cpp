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

void LinkState::answered(qint64 nowMs)
{
    m_hasAnswered = true;
    if (nowMs - m_openedAtMs < m_times.provenMs)
        return;
    m_delayMs = m_times.firstMs;
    m_hasFreeReopening = true;
}

void LinkState::lost(LinkCause cause, qint64 nowMs)
{
    m_cause = cause;
    const bool wasOpen = m_state == Up;
    const bool tookTimeOut = cause == LinkCause::Silent || cause == LinkCause::CutOff;
    if (wasOpen && m_hasFreeReopening) {
        m_hasFreeReopening = false;
        m_state = Connecting;
        return;
    }
    m_state = BackingOff;
    if (wasOpen && (tookTimeOut || m_hasAnswered)) {
        m_retryAtMs = m_openedAtMs + m_times.floorMs;
        return;
    }
    m_retryAtMs = nowMs + m_delayMs;
    m_delayMs = qMin(2 * m_delayMs, m_times.longestMs);
}
