// SPDX-License-Identifier: MIT
#include "tcp_socket.h"

#include <cerrno>

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <unistd.h>

namespace {

const int sliceMs = 50; // between two looks at the stop

LinkCause causeOf(int error)
{
    switch (error) {
    case 0:
        return LinkCause::None;
    case ECONNREFUSED:
        return LinkCause::Refused;
    case EHOSTUNREACH:
    case ENETUNREACH:
        return LinkCause::NoRoute;
    }
    return LinkCause(LinkCause::NotOpened, error);
}

} // namespace

LinkCause TcpSocket::connectTo(const QString &host, quint16 port, int timeoutMs)
{
    const Deadline deadline(timeoutMs);
    std::vector<SocketAddress> addresses;
    LinkCause cause = m_names.find(host, port, deadline, m_stop, &addresses);
    for (std::size_t i = 0; i < addresses.size(); ++i) {
        const int share = deadline.left() / static_cast<int>(addresses.size() - i);
        cause = connectTo(addresses[i], Deadline(share));
        if (cause == LinkCause::None || cause == LinkCause::Stopped)
            break;
    }
    return cause == LinkCause::Silent ? LinkCause(LinkCause::NoAnswer, timeoutMs) : cause;
}

LinkCause TcpSocket::connectTo(const SocketAddress &address, const Deadline &deadline)
{
    close();
    m_descriptor = socket(address.bytes.ss_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (m_descriptor < 0)
        return causeOf(errno);
    const int on = 1;
    setsockopt(m_descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    int error = 0;
    LinkCause cause;
    if (connect(m_descriptor, reinterpret_cast<const sockaddr *>(&address.bytes), address.size) != 0)
        error = errno;
    if (error == EINPROGRESS) {
        cause = waitFor(POLLOUT, deadline);
        socklen_t size = sizeof error;
        getsockopt(m_descriptor, SOL_SOCKET, SO_ERROR, &error, &size);
    }
    if (cause == LinkCause::None)
        cause = causeOf(error);
    if (cause == LinkCause::None)
        letCallsWait();
    else
        close();
    return cause;
}

/// From now on send and recv wait by themselves, a slice at a time.
void TcpSocket::letCallsWait() const
{
    const timeval slice = {0, sliceMs * 1000};
    setsockopt(m_descriptor, SOL_SOCKET, SO_RCVTIMEO, &slice, sizeof slice);
    setsockopt(m_descriptor, SOL_SOCKET, SO_SNDTIMEO, &slice, sizeof slice);
    fcntl(m_descriptor, F_SETFL, fcntl(m_descriptor, F_GETFL) & ~O_NONBLOCK);
}

LinkCause TcpSocket::send(const char *bytes, int size, const Deadline &deadline)
{
    while (size > 0) {
        const ssize_t sent = ::send(m_descriptor, bytes, static_cast<std::size_t>(size), MSG_NOSIGNAL);
        if (sent >= 0) {
            bytes += sent;
            size -= static_cast<int>(sent);
            continue;
        }
        if (errno != EAGAIN && errno != EINTR)
            return LinkCause::Closed;
        if (m_stop)
            return LinkCause::Stopped;
        if (deadline.isOver())
            return LinkCause::Congested;
    }
    return LinkCause::None;
}

LinkCause TcpSocket::receive(char *bytes, int most, int *received, const Deadline &deadline)
{
    for (;;) {
        const int left = deadline.left();
        const bool isShort = left < sliceMs; // recv would wait too long
        const LinkCause notReady = isShort && left > 0 ? waitFor(POLLIN, deadline) : LinkCause();
        if (notReady != LinkCause::None)
            return notReady;
        const ssize_t size =
            recv(m_descriptor, bytes, static_cast<std::size_t>(most), isShort ? MSG_DONTWAIT : 0);
        if (size > 0) {
            *received = static_cast<int>(size);
            return LinkCause::None;
        }
        if (size == 0 || (errno != EAGAIN && errno != EINTR))
            return LinkCause::Closed;
        if (m_stop)
            return LinkCause::Stopped;
        if (left == 0)
            return LinkCause::Silent;
    }
}

LinkCause TcpSocket::pause(const Deadline &deadline) const
{
    while (!deadline.isOver() && !m_stop)
        poll(nullptr, 0, qMin(deadline.left(), sliceMs));
    return m_stop ? LinkCause::Stopped : LinkCause::None;
}

void TcpSocket::close()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
    m_descriptor = -1;
}

LinkCause TcpSocket::waitFor(short events, const Deadline &deadline) const
{
    if (m_descriptor < 0)
        return LinkCause::Closed;
    pollfd watched = {m_descriptor, events, 0};
    for (;;) {
        const int left = deadline.left();
        if (poll(&watched, 1, qMin(left, sliceMs)) > 0)
            return LinkCause::None;
        if (m_stop)
            return LinkCause::Stopped;
        if (left == 0)
            return LinkCause::Silent;
    }
}
