// SPDX-License-Identifier: MIT
/// \file
/// The link to a station as a state machine, without the socket: time (milliseconds of any steady clock) goes
/// in with the events. Used by Connection on the communication thread.
///
///     state        event                                    next
///     Connecting   opened                                   Up
///     Connecting   lost (refused, no route, no answer)      BackingOff, each time twice as long, up to the longest
///     Up           lost for the first time                  Connecting: a first reopening costs nothing
///     Up           lost after a time-out or an answer       BackingOff until the floor: opened again no more often
///     Up           lost otherwise                           BackingOff, each time twice as long
///     BackingOff   its delay is over                        Connecting
///
/// An answer on a connection that is open for long enough proves the link: delays and the free reopening start anew.

#pragma once

#include "link_cause.h"

struct BackOffTimes
{
    int firstMs = 1000;
    int longestMs = 60000;
    int floorMs = 100;   ///< between two openings of a link that answers, yet is lost again and again
    int provenMs = 5000; ///< an answer so long after the opening proves the link
};

class LinkState
{
public:
    enum State { Connecting, Up, BackingOff };

    explicit LinkState(BackOffTimes times = {}) : m_times(times), m_delayMs(times.firstMs) {}

    /// Ends a back-off whose delay is over, then tells the state.
    State at(qint64 nowMs);
    bool isUp() const { return m_state == Up; }
    /// The time at which a back-off ends.
    qint64 retryAtMs() const { return m_retryAtMs; }
    /// Why the link was lost last; None while it never was.
    LinkCause cause() const { return m_cause; }

    void opened(qint64 nowMs);
    void answered(qint64 nowMs);
    void lost(LinkCause cause, qint64 nowMs);

private:
    BackOffTimes m_times;
    State m_state = Connecting;
    LinkCause m_cause = LinkCause::None;
    bool m_hasAnswered = false;     ///< since it was opened
    bool m_hasFreeReopening = true; ///< not lost since the link was proven
    int m_delayMs;
    qint64 m_openedAtMs = 0;
    qint64 m_retryAtMs = 0;
};
