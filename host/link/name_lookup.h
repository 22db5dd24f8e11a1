// SPDX-License-Identifier: MIT
/// \file
/// The addresses of a host name, looked up on a thread of its own: the C library's look-up can take minutes and cannot
/// be interrupted. Used on the communication thread only.

#pragma once

#include "deadline.h"
#include "link_cause.h"

#include <atomic>
#include <memory>
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
    struct Job;

    std::shared_ptr<Job> m_job; ///< shared with its thread, which may outlive this object
};
