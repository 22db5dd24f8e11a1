// SPDX-License-Identifier: MIT
#include "statistics.h"

#include <algorithm>

namespace {
const std::size_t roundTripsKept = 1000;
} // namespace

void RoundTrips::add(qint64 microseconds)
{
    if (m_microseconds.size() < roundTripsKept) {
        m_microseconds.push_back(microseconds);
    } else {
        m_sorted.erase(std::lower_bound(m_sorted.begin(), m_sorted.end(), m_microseconds[m_next]));
        m_microseconds[m_next] = microseconds;
        m_next = (m_next + 1) % roundTripsKept;
    }
    m_sorted.insert(std::upper_bound(m_sorted.begin(), m_sorted.end(), microseconds), microseconds);
}

qint64 RoundTrips::percentile(int percent) const
{
    const std::size_t rank = (m_sorted.size() * static_cast<std::size_t>(percent) + 99) / 100;
    return m_sorted.empty() ? 0 : m_sorted[std::max<std::size_t>(rank, 1) - 1];
}

void UnitStatistics::add(const Exchange &exchange)
{
    if (exchange.end == Exchange::NotSent || exchange.cause == LinkCause::Stopped)
        return;
    ++requests;
    if (exchange.end == Exchange::Answered) {
        const int exception = exceptionCode(exchange.reply);
        if (exception >= 0)
            ++exceptions[exception];
        else
            ++good;
        roundTrips.add(exchange.microseconds);
    }
    if (exchange.end != Exchange::NoReply)
        return;
    lostMicroseconds += exchange.microseconds;
    if (exchange.fault != ReplyFault::None)
        ++heldBack[exchange.fault];
    else if (exchange.cause == LinkCause::Closed)
        ++closed;
    else
        ++timeOuts;
}

void UnitStatistics::add(const Aftermath &before)
{
    reconnects += before.reconnected ? 1 : 0;
    lostMicroseconds += before.microseconds;
}

double UnitStatistics::lostPercent(qint64 elapsedMicroseconds) const
{
    return elapsedMicroseconds > 0 ? 100.0 * double(lostMicroseconds) / double(elapsedMicroseconds) : 0.0;
}
