// SPDX-License-Identifier: MIT
#include "statistics.h"

#include <algorithm>
#include <vector>

namespace {
const std::size_t roundTripsKept = 1000;
} // namespace

void RoundTrips::add(qint64 microseconds)
{
    m_microseconds.push_back(microseconds);
    if (m_microseconds.size() > roundTripsKept)
        m_microseconds.pop_front();
}

qint64 RoundTrips::percentile(int percent) const
{
    if (m_microseconds.empty())
        return 0;
    std::vector<qint64> trips(m_microseconds.begin(), m_microseconds.end());
    const auto rank = trips.begin() + (static_cast<int>(trips.size()) * percent + 99) / 100 - 1;
    std::nth_element(trips.begin(), rank, trips.end());
    return *rank;
}

void UnitStatistics::add(const Exchange &exchange)
{
    if (exchange.end == Exchange::NotSent || exchange.cause == LinkCause::Stopped)
        return;
    ++requests;
    if (exchange.end == Exchange::NoReply) {
        lostMicroseconds += exchange.microseconds;
        if (exchange.fault != ReplyFault::None)
            ++heldBack[exchange.fault];
        else
            ++(exchange.cause == LinkCause::Closed ? closed : timeOuts);
    } else if (exchange.end == Exchange::Answered) {
        const int exception = exceptionCode(exchange.reply);
        ++(exception >= 0 ? exceptions[exception] : good);
        roundTrips.add(exchange.microseconds);
    }
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
