// SPDX-License-Identifier: MIT
#include "name_lookup.h"

#include <chrono>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <system_error>
#include <thread>

#include <netdb.h>

namespace {

const int sliceMs = 50; // between two looks at the stop

/// `flags` are those of getaddrinfo.
LinkCause lookUp(const QByteArray &host, const QByteArray &port, int flags,
                 std::vector<SocketAddress> *addresses)
{
    addrinfo hints = {};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = flags | AI_NUMERICSERV;
    addrinfo *list = nullptr;
    const int error = getaddrinfo(host.constData(), port.constData(), &hints, &list);
    if (error != 0)
        return error == EAI_NONAME || error == EAI_NODATA ? LinkCause::NoSuchName : LinkCause::NoLookup;
    for (const addrinfo *entry = list; entry; entry = entry->ai_next) {
        SocketAddress address;
        std::memcpy(&address.bytes, entry->ai_addr, entry->ai_addrlen);
        address.size = entry->ai_addrlen;
        addresses->push_back(address);
    }
    freeaddrinfo(list);
    return LinkCause::None;
}

} // namespace

struct NameLookup::Job
{
    QByteArray host;
    QByteArray port;
    std::mutex mutex;
    std::condition_variable isReady;
    bool isDone = false;
    LinkCause cause;
    std::vector<SocketAddress> addresses;

    void run()
    {
        std::vector<SocketAddress> found;
        const LinkCause ended = lookUp(host, port, 0, &found);
        const std::lock_guard<std::mutex> lock(mutex);
        cause = ended;
        addresses = found;
        isDone = true;
        isReady.notify_all();
    }
};

LinkCause NameLookup::find(const QString &host, quint16 port, const Deadline &deadline,
                           const std::atomic<bool> &stop, std::vector<SocketAddress> *addresses)
{
    const QByteArray name = host.toUtf8();
    const QByteArray number = QByteArray::number(port);
    if (lookUp(name, number, AI_NUMERICHOST, addresses) == LinkCause::None)
        return LinkCause::None;
    if (!m_job) {
        m_job = std::make_shared<Job>();
        m_job->host = name;
        m_job->port = number;
        try {
            std::thread([job = m_job] { job->run(); }).detach();
        } catch (const std::system_error &) { // no thread to be had
            m_job.reset();
            return LinkCause::NoLookup;
        }
    }
    std::unique_lock<std::mutex> lock(m_job->mutex);
    while (!m_job->isDone && !stop && !deadline.isOver())
        m_job->isReady.wait_for(lock, std::chrono::milliseconds(qMin(deadline.left(), sliceMs)));
    if (!m_job->isDone)
        return stop ? LinkCause::Stopped : LinkCause::NoLookup;
    *addresses = m_job->addresses;
    const LinkCause cause = m_job->cause;
    lock.unlock();
    m_job.reset();
    return cause;
}
