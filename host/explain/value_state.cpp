// SPDX-License-Identifier: MIT
#include "value_state.h"

#include <algorithm>

ValueState::ValueState(const Variable &variable)
    : m_variable(variable), m_span(spanOf(variable)), m_parts{{m_span.first, m_span.end(), -1, QString()}}
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

/// The part that a read covers, which becomes one part if it was several.
ValueState::Part &ValueState::partOf(const Span &read)
{
    const int first = std::max(read.first, m_span.first);
    const int end = std::min(read.end(), m_span.end());
    splitAt(first);
    splitAt(end);
    const auto part =
        std::find_if(m_parts.begin(), m_parts.end(), [=](const Part &p) { return p.first == first; });
    const auto next = std::find_if(part, m_parts.end(), [=](const Part &p) { return p.end == end; }) + 1;
    for (auto joined = part + 1; joined != next; ++joined)
        part->readAtMs = std::min(part->readAtMs, joined->readAtMs); // counts when the read failed
    part->end = end;
    m_parts.erase(part + 1, next);
    return *part;
}

/// Lets a part begin at an address, unless one does.
void ValueState::splitAt(int address)
{
    const auto part = std::find_if(m_parts.begin(), m_parts.end(),
                                   [=](const Part &p) { return p.first < address && address < p.end; });
    if (part == m_parts.end())
        return;
    Part tail = *part;
    part->end = tail.first = address;
    m_parts.insert(part + 1, tail);
}

void ValueState::store(const Span &read, const QByteArray &value, qint64 nowMs)
{
    const bool wasKnown = readAtMs() >= 0;
    Part &part = partOf(read);
    part.readAtMs = nowMs;
    part.failure.clear();
    m_changed = wasKnown && value != m_value;
    m_value = value;
}

void ValueState::fail(const Span &read, const QString &why)
{
    partOf(read).failure = why;
}

ValueState::State ValueState::state(qint64 nowMs, qint64 freshForMs) const
{
    const qint64 readAt = readAtMs();
    if (!failure().isEmpty())
        return Failed;
    return readAt < 0 ? Never : nowMs - readAt <= freshForMs ? Fresh : Old;
}

QString ValueState::stateText(qint64 nowMs, qint64 freshForMs) const
{
    const State now = state(nowMs, freshForMs);
    if (now == Fresh)
        return QStringLiteral("fresh");
    const qint64 readAt = readAtMs();
    const QString age = readAt < 0 ? QStringLiteral("never")
                                   : QStringLiteral("old %1 s").arg(double(nowMs - readAt) / 1000, 0, 'f', 1);
    return now == Failed ? QStringLiteral("failed: %1, %2").arg(failure(), age) : age;
}
