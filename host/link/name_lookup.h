// SPDX-License-Identifier: MIT
/// \file
/// The addresses of a host name, looked up on a thread of its own: the C library's look-up can take minutes and cannot
/// be interrupted. Used on the communication thread only.

#pragma once

#include "deadline.h"
#include "link_cause.h"

#include <atomic>
#include <future>
#include <vector>

#include <sys/socket.h>

struct SocketAddress
{
    sockaddr_storage bytes = {};
    socklen_t size = 0;
};

class NameLookup
{
public:
    /// Looks the name up, or goes on with a look-up of it that an earlier call left unfinished. A numeric address needs
    /// no thread. NoSuchName, NoLookup or Stopped when there are no addresses.
    LinkCause find(const QString &host, quint16 port, const Deadline &deadline, const std::atomic<bool> &stop,
                   std::vector<SocketAddress> *addresses);

private:
    struct Found
    {
        LinkCause cause;
        std::vector<SocketAddress> addresses;
    };
    static Found lookUp(const QByteArray &host, const QByteArray &port, int flags);
    static std::future<Found> start(const QByteArray &host, const QByteArray &port);

    std::future<Found> m_found; ///< of the look-up that goes on; its thread may outlive this object
};
