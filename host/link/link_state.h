// SPDX-License-Identifier: MIT
/// \file
/// The link to a station as a state machine, without the socket: time (milliseconds of any steady clock) goes
/// in with the events. Used by Connection on the communication thread.
///
///     state        event                                     next
///     Connecting   opened                                    Up
///     Connecting   lost (refused, not reached)               BackingOff
///     Up           sent                                      Waiting
///     Waiting      answered                                  Up, the back-off starts anew
///     Waiting      drained (quiet again after a time-out)    Up
///     Up, Waiting  lost after a time-out                     Connecting: the time-out was delay enough
///     Up, Waiting  lost otherwise, after an answer           Connecting: a first reopening costs nothing
///     Up, Waiting  lost otherwise, no answer since opened    BackingOff: a peer that accepts, then closes
///     BackingOff   its delay is over                         Connecting
///
/// Each BackingOff doubles the delay, up to the longest.

#pragma once

#include <QtCore/QString>
#include <QtCore/QtGlobal>

/// Why a link was lost.
enum class LinkCause {
    None,
    Refused,    ///< the peer refuses connections
    NotReached, ///< no connection within the time-out, no route, no such name
    Closed,     ///< ended by the peer, in good order or by a reset
    Silent,     ///< no reply within the time-out
    CutOff,     ///< a reply began and did not end within the time-out
    BadHeader,  ///< the stream is no longer Modbus
    HeldBack,   ///< a reply that cannot answer the request
    Unasked,    ///< a reply that nothing was asked for: late, or sent twice
    Stopped,    ///< this host ended while it waited
};

/// In words, such as "connection refused".
QString linkCauseText(LinkCause cause);

struct BackOffTimes
{
    int firstMs = 1000;
    int longestMs = 60000;
};

class LinkState
{
public:
    enum State { Connecting, Up, Waiting, BackingOff };

    explicit LinkState(BackOffTimes times = {}) : m_times(times), m_delayMs(times.firstMs) {}

    /// Ends a back-off whose delay is over, then tells the state.
    State at(qint64 nowMs);
    /// The time at which a back-off ends.
    qint64 retryAtMs() const { return m_retryAtMs; }
    /// Why the link was lost last; None while it never was.
    LinkCause cause() const { return m_cause; }

    void opened();
    void sent();
    void answered();
    void drained();
    void lost(LinkCause cause, qint64 nowMs);

private:
    bool mustBackOff(LinkCause cause) const;

    BackOffTimes m_times;
    State m_state = Connecting;
    LinkCause m_cause = LinkCause::None;
    bool m_answeredSinceOpened = false;
    int m_delayMs;
    qint64 m_retryAtMs = 0;
};
