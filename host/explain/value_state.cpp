// SPDX-License-Identifier: MIT
#include "value_state.h"

#include <algorithm>
#include <iterator>

ValueState::ValueState(const Variable &variable)
    : m_variable(variable), m_addressText(variable.addressText()), m_place(placeText(variable)),
      m_span(spanOf(variable)), m_parts{{m_span.first, Part()}}
{
}

qint64 ValueState::readAtMs() const
{
    return std::min_element(
               m_parts.begin(), m_parts.end(),
               [](const auto &a, const auto &b) { return a.second.readAtMs < b.second.readAtMs; })
        ->second.readAtMs;
}

QString ValueState::failure() const
{
    const auto failed = std::find_if(m_parts.begin(), m_parts.end(),
                                     [](const auto &part) { return !part.second.failure.isEmpty(); });
    return failed == m_parts.end() ? QString() : failed->second.failure;
}

/// The part that a read covers, which becomes one part if it was several.
ValueState::Part &ValueState::partOf(const Span &read)
{
    const auto part = splitAt(std::max(read.first, m_span.first));
    const auto next = splitAt(std::min(read.end(), m_span.end()));
    for (auto joined = std::next(part); joined != next; joined = m_parts.erase(joined))
        part->second.readAtMs =
            std::min(part->second.readAtMs, joined->second.readAtMs); // counts when the read failed
    return part->second;
}

/// Lets a part begin at an address, unless one does. Returns it.
std::map<int, ValueState::Part>::iterator ValueState::splitAt(int address)
{
    if (address >= m_span.end())
        return m_parts.end();
    return m_parts.emplace(address, std::prev(m_parts.upper_bound(address))->second).first;
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
    m_changed = false;
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
