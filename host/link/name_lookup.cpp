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

/// False when the look-up failed. `flags` are those of getaddrinfo.
bool lookUp(const QByteArray &host, const QByteArray &port, int flags, std::vector<SocketAddress> *addresses)
{
    addrinfo hints = {};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = flags | AI_NUMERICSERV;
    addrinfo *list = nullptr;
    if (getaddrinfo(host.constData(), port.constData(), &hints, &list) != 0)
        return false;
    for (const addrinfo *entry = list; entry; entry = entry->ai_next) {
        SocketAddress address;
        std::memcpy(&address.bytes, entry->ai_addr, entry->ai_addrlen);
        address.size = entry->ai_addrlen;
        addresses->push_back(address);
    }
    freeaddrinfo(list);
    return true;
}

} // namespace

struct NameLookup::Job
{
    QByteArray host;
    QByteArray port;
    std::mutex mutex;
    std::condition_variable isReady;
    bool isDone = false;
    std::vector<SocketAddress> addresses;

    void run()
    {
        std::vector<SocketAddress> found;
        lookUp(host, port, 0, &found);
        const std::lock_guard<std::mutex> lock(mutex);
        addresses = found;
        isDone = true;
        isReady.notify_all();
    }
};

NameLookup::Result NameLookup::find(const QString &host, quint16 port, const Deadline &deadline,
                                    const std::atomic<bool> &stop, std::vector<SocketAddress> *addresses)
{
    const QByteArray name = host.toUtf8();
    const QByteArray number = QByteArray::number(port);
    if (lookUp(name, number, AI_NUMERICHOST, addresses))
        return Found;
    if (!m_job) {
        m_job = std::make_shared<Job>();
        m_job->host = name;
        m_job->port = number;
        try {
            std::thread([job = m_job] { job->run(); }).detach();
        } catch (const std::system_error &) { // no thread to be had
            m_job.reset();
            return NotFound;
        }
    }
    std::unique_lock<std::mutex> lock(m_job->mutex);
    while (!m_job->isDone && !stop && !deadline.isOver())
        m_job->isReady.wait_for(lock, std::chrono::milliseconds(qMin(deadline.left(), sliceMs)));
    if (!m_job->isDone)
        return stop ? Stopped : TimedOut;
    *addresses = m_job->addresses;
    lock.unlock();
    m_job.reset();
    return addresses->empty() ? NotFound : Found;
}
