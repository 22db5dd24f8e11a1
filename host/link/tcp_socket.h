// SPDX-License-Identifier: MIT
/// \file
/// One TCP connection. Every call that may wait has a deadline, and ends within a fraction of a second once the stop is
/// set. A POSIX socket whose calls wait a slice of time by themselves: an exchange costs one send and two recv. Used on
/// the communication thread only.

#pragma once

#include "name_lookup.h"

class TcpSocket
{
public:
    enum Result {
        Done,
        TimedOut,
        Stopped,
        Refused,      ///< of connectTo
        NoSuchName,   ///< of connectTo
        Disconnected, ///< there is no connection, or no longer
    };

    /// The stop must outlive the socket.
    explicit TcpSocket(const std::atomic<bool> &stop) : m_stop(stop) {}
    ~TcpSocket() { close(); }
    TcpSocket(const TcpSocket &) = delete;
    TcpSocket &operator=(const TcpSocket &) = delete;

    /// Tries all addresses of the name in turn.
    Result connectTo(const QString &host, quint16 port, const Deadline &deadline);
    Result send(const char *bytes, int size, const Deadline &deadline);
    /// Waits for bytes, and stores at most `most` of them and their number. Looks at the socket first, so that a
    /// deadline that is over takes what is there.
    Result receive(char *bytes, int most, int *received, const Deadline &deadline);
    /// Waits without looking at the socket. Done when the deadline is over.
    Result pause(const Deadline &deadline) const;
    void close();

private:
    Result connectTo(const SocketAddress &address, const Deadline &deadline);
    void letCallsWait() const;
    Result waitFor(short events, const Deadline &deadline) const;

    const std::atomic<bool> &m_stop;
    NameLookup m_names;
    int m_descriptor = -1;
};
