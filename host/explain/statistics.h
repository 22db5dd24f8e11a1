// SPDX-License-Identifier: MIT
/// \file
/// Counts and times of the exchanges with one unit. Plain data and arithmetic; whoever shares it locks it.

#pragma once

#include "../link/exchange.h"

#include <deque>
#include <map>

/// The last thousand round trips.
class RoundTrips
{
public:
    void add(qint64 microseconds);
    /// The round trip in microseconds that `percent`, 1 to 100, of all do not exceed; 0 when there are none.
    qint64 percentile(int percent) const;

private:
    std::deque<qint64> m_microseconds; ///< the oldest first
};

struct UnitStatistics
{
    int requests = 0; ///< sent, retries included
    int good = 0;
    std::map<int, int> exceptions;      ///< how many of each code
    int timeOuts = 0;                   ///< no reply in time, or half a reply
    std::map<ReplyFault, int> heldBack; ///< replies that count as none, by reason
    int closed = 0;                     ///< connections that ended instead of a reply
    int late = 0;                       ///< replies that were thrown away: late, or unasked
    int reconnects = 0;
    RoundTrips roundTrips;       ///< of good exchanges and exceptions
    qint64 lostMicroseconds = 0; ///< waited without getting an answer
    bool isOff = false;          ///< switched off, to be tried again later

    void add(const Exchange &exchange);
    void add(const Aftermath &before);

    /// Of all the time, in percent.
    double lostPercent(qint64 elapsedMicroseconds) const;
};
