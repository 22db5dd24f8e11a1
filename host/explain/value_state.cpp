// SPDX-License-Identifier: MIT
#include "value_state.h"

#include <algorithm>

ValueState::ValueState(const Variable &variable)
    : m_variable(variable), m_span(spanOf(variable)), m_parts(static_cast<std::size_t>(m_span.count))
{
}

qint64 ValueState::readAtMs() const
{
    const auto oldest = std::min_element(
        m_parts.begin(), m_parts.end(), [](const Part &a, const Part &b) { return a.readAtMs < b.readAtMs; });
    return oldest == m_parts.end() ? -1 : oldest->readAtMs;
}

QString ValueState::failure() const
{
    const auto failed = std::find_if(m_parts.begin(), m_parts.end(),
                                     [](const Part &part) { return !part.failure.isEmpty(); });
    return failed == m_parts.end() ? QString() : failed->failure;
}

std::pair<ValueState::PartAt, ValueState::PartAt> ValueState::partsOf(const Span &read)
{
    const int from = std::max(read.first, m_span.first) - m_span.first;
    const int to = std::min(read.end(), m_span.end()) - m_span.first;
    return {m_parts.begin() + from, m_parts.begin() + std::max(from, to)};
}

void ValueState::store(const Span &read, const QByteArray &value, qint64 nowMs)
{
    const bool wasKnown = readAtMs() >= 0;
    const auto [first, last] = partsOf(read);
    std::fill(first, last, Part{nowMs, QString()});
    m_changed = wasKnown && value != m_value;
    m_value = value;
}

void ValueState::fail(const Span &read, const QString &why)
{
    const auto [first, last] = partsOf(read);
    std::for_each(first, last, [&why](Part &part) { part.failure = why; });
}

QString ValueState::ageText(qint64 nowMs, qint64 freshForMs) const
{
    const qint64 readAt = readAtMs();
    const qint64 age = nowMs - readAt;
    const QString why = failure();
    QString text;
    if (readAt < 0)
        text = QStringLiteral("never");
    else if (age <= freshForMs && why.isEmpty())
        text = QStringLiteral("fresh");
    else
        text = QStringLiteral("old %1 s").arg(double(age) / 1000, 0, 'f', 1);
    return why.isEmpty() ? text : QStringLiteral("failed: %1, %2").arg(why, text);
}
