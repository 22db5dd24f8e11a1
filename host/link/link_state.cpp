// SPDX-License-Identifier: MIT
#include "link_state.h"

QString linkCauseText(LinkCause cause)
{
    switch (cause) {
    case LinkCause::None:
        return QStringLiteral("connected");
    case LinkCause::Refused:
        return QStringLiteral("connection refused");
    case LinkCause::NotReached:
        return QStringLiteral("not reached");
    case LinkCause::NoSuchName:
        return QStringLiteral("no such host name");
    case LinkCause::Closed:
        return QStringLiteral("connection closed by the peer");
    case LinkCause::Silent:
        return QStringLiteral("no reply");
    case LinkCause::CutOff:
        return QStringLiteral("half a reply");
    case LinkCause::BadHeader:
        return QStringLiteral("bad header");
    case LinkCause::HeldBack:
        return QStringLiteral("reply held back");
    case LinkCause::Unasked:
        return QStringLiteral("unasked reply");
    case LinkCause::Congested:
        return QStringLiteral("request not taken");
    case LinkCause::Flood:
        return QStringLiteral("flood of unasked replies");
    case LinkCause::Stopped:
        return QStringLiteral("stopped while waiting");
    }
    return QString();
}

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
