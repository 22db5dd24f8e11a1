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
        return;
    }
    m_microseconds[m_next] = microseconds;
    m_next = (m_next + 1) % roundTripsKept;
}

qint64 RoundTrips::percentile(int percent) const
{
    if (m_microseconds.empty())
        return 0;
    std::vector<qint64> sorted = m_microseconds;
    const std::size_t rank = (sorted.size() * static_cast<std::size_t>(percent) + 99) / 100;
    const auto at = sorted.begin() + static_cast<std::ptrdiff_t>(std::max<std::size_t>(rank, 1) - 1);
    std::nth_element(sorted.begin(), at, sorted.end());
    return *at;
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
