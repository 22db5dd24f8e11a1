// SPDX-License-Identifier: MIT
#include "value_state.h"

#include <algorithm>

ValueState::ValueState(const Variable &variable)
    : m_variable(variable), m_span(spanOf(variable)), m_readAtMs(static_cast<std::size_t>(m_span.count), -1)
{
}

qint64 ValueState::readAtMs() const
{
    return m_readAtMs.empty() ? -1 : *std::min_element(m_readAtMs.begin(), m_readAtMs.end());
}

void ValueState::store(const Span &read, const QByteArray &value, qint64 nowMs)
{
    const bool wasKnown = readAtMs() >= 0;
    const int from = std::max(read.first, m_span.first) - m_span.first;
    const int to = std::min(read.end(), m_span.end()) - m_span.first;
    std::fill(m_readAtMs.begin() + from, m_readAtMs.begin() + to, nowMs);
    m_changed = wasKnown && value != m_value;
    m_value = value;
    m_failure.clear();
}

QString ValueState::ageText(qint64 nowMs, qint64 freshForMs) const
{
    const qint64 readAt = readAtMs();
    const qint64 age = nowMs - readAt;
    QString text;
    if (readAt < 0)
        text = QStringLiteral("never");
    else if (age <= freshForMs && m_failure.isEmpty())
        text = QStringLiteral("fresh");
    else
        text = QStringLiteral("old %1 s").arg(double(age) / 1000, 0, 'f', 1);
    return m_failure.isEmpty() ? text : QStringLiteral("failed: %1, %2").arg(m_failure, text);
}
