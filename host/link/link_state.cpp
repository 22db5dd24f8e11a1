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

void LinkState::opened()
{
    m_state = Up;
    m_answeredSinceOpened = false;
}

void LinkState::sent()
{
    m_state = Waiting;
}

void LinkState::answered()
{
    m_state = Up;
    m_answeredSinceOpened = true;
    m_delayMs = m_times.firstMs;
}

void LinkState::drained()
{
    m_state = Up;
}

void LinkState::lost(LinkCause cause, qint64 nowMs)
{
    m_cause = cause;
    if (!mustBackOff(cause)) {
        m_state = Connecting;
        return;
    }
    m_state = BackingOff;
    m_retryAtMs = nowMs + m_delayMs;
    m_delayMs = qMin(2 * m_delayMs, m_times.longestMs);
}

bool LinkState::mustBackOff(LinkCause cause) const
{
    if (m_state == Connecting)
        return true;
    return cause != LinkCause::Silent && cause != LinkCause::CutOff && !m_answeredSinceOpened;
}
