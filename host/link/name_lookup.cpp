// SPDX-License-Identifier: MIT
#include "name_lookup.h"

#include <chrono>
#include <cstring>
#include <system_error>
#include <thread>

#include <netdb.h>

namespace {
const int sliceMs = 50; // between two looks at the stop
} // namespace

/// `flags` are those of getaddrinfo.
NameLookup::Found NameLookup::lookUp(const QByteArray &host, const QByteArray &port, int flags)
{
    addrinfo hints = {};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = flags | AI_NUMERICSERV;
    addrinfo *list = nullptr;
    const int error = getaddrinfo(host.constData(), port.constData(), &hints, &list);
    if (error != 0)
        return {error == EAI_NONAME || error == EAI_NODATA ? LinkCause::NoSuchName : LinkCause::NoLookup, {}};
    Found found;
    for (const addrinfo *entry = list; entry; entry = entry->ai_next) {
        SocketAddress address;
        std::memcpy(&address.bytes, entry->ai_addr, entry->ai_addrlen);
        address.size = entry->ai_addrlen;
        found.addresses.push_back(address);
    }
    freeaddrinfo(list);
    return found;
}

LinkCause NameLookup::find(const QString &host, quint16 port, const Deadline &deadline,
                           const std::atomic<bool> &stop, std::vector<SocketAddress> *addresses)
{
    const QByteArray name = host.toUtf8();
    const QByteArray number = QByteArray::number(port);
    Found found = lookUp(name, number, AI_NUMERICHOST);
    if (found.cause != LinkCause::None) {
        try {
            if (!m_found.valid())
                m_found = start(name, number);
        } catch (const std::system_error &) { // there is no thread to be had
            return LinkCause::NoLookup;
        }
        while (m_found.wait_for(std::chrono::milliseconds(qMin(deadline.left(), sliceMs))) !=
               std::future_status::ready) {
            if (stop || deadline.isOver())
                return stop ? LinkCause::Stopped : LinkCause::NoLookup;
        }
        found = m_found.get();
    }
    *addresses = found.addresses;
    return found.cause;
}

std::future<NameLookup::Found> NameLookup::start(const QByteArray &host, const QByteArray &port)
{
    std::packaged_task<Found()> task([=] { return lookUp(host, port, 0); });
    std::future<Found> found = task.get_future();
    std::thread(std::move(task)).detach();
    return found;
}
