// SPDX-License-Identifier: MIT
/// \file
/// One TCP connection. Every call that may wait has a deadline, and ends within a fraction of a second once the stop is
/// set. A POSIX socket whose calls wait a slice of time by themselves: an exchange costs one send and two recv. Used on
/// the communication thread.

#pragma once

#include "name_lookup.h"

/// Every call that waits returns None when it is done, Stopped when the stop was set, or why it failed.
class TcpSocket
{
public:
    /// The stop must outlive the socket.
    explicit TcpSocket(const std::atomic<bool> &stop) : m_stop(stop) {}
    ~TcpSocket() { close(); }
    TcpSocket(const TcpSocket &) = delete;
    TcpSocket &operator=(const TcpSocket &) = delete;

    /// Tries all addresses of the name in turn.
    LinkCause connectTo(const QString &host, quint16 port, int timeoutMs);
    /// Congested when the peer has not taken all bytes in time; Closed when there is no connection any more.
    LinkCause send(const char *bytes, int size, const Deadline &deadline);
    /// Waits for bytes, and stores at most `most` of them and their number. Looks at the socket first, so that a
    /// deadline that is over takes what is there. Silent when there is nothing; Closed when the connection has ended.
    LinkCause receive(char *bytes, int most, int *received, const Deadline &deadline);
    /// Waits without looking at the socket. None when the deadline is over.
    LinkCause pause(const Deadline &deadline) const;
    void close();

private:
    LinkCause connectTo(const SocketAddress &address, const Deadline &deadline);
    void letCallsWait() const;
    LinkCause waitFor(short events, const Deadline &deadline) const;

    const std::atomic<bool> &m_stop;
    NameLookup m_names;
    int m_descriptor = -1;
};
