// SPDX-License-Identifier: MIT
#include "value_state.h"

#include <algorithm>

namespace {

/// The area on which the driver requests an area: bits and pairs of registers live in registers.
int requestArea(int area)
{
    return area < 2 ? area : 4 + area % 2;
}

} // namespace

bool Span::overlaps(const Span &other) const
{
    return unit == other.unit && area == other.area && first < other.first + other.count &&
           other.first < first + count;
}

Span spanOf(const Variable &variable)
{
    const int area = requestArea(variable.area);
    const bool isBitOfRegister = variable.area == 2 || variable.area == 3;
    if (!isBitOfRegister)
        return {variable.unit, area, variable.address, variable.driverCount()};
    const int firstRegister = variable.address / 16;
    const int lastRegister = (variable.address + variable.count - 1) / 16;
    return {variable.unit, area, firstRegister, lastRegister - firstRegister + 1};
}

Span spanOf(const RW_VAR &request)
{
    const int perLength = request.area < 2 ? 8 : 1; // bits are requested in whole bytes
    return {request.station, request.area, request.startAddress, request.dataLength * perLength};
}

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
    const int to = std::min(read.first + read.count, m_span.first + m_span.count) - m_span.first;
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
